/* Loads an XML file into a DOM document and prints its outline: every node
 * with its type name and node name, elements with their attributes.
 *
 *   load_walk [FILE]        (default: catalog.xml beside the program's sources)
 *
 * Shows: lumInitParser, lumInitDocument, lumDocLoad, lumDocExecute and
 * lumNodeExecute with method numbers, string limits, lumDocDelete. */
#include <stdio.h>
#include <string.h>

#include <lumxml.h>

#ifndef EXAMPLES_DIR
#define EXAMPLES_DIR "."
#endif

static int failures = 0;

/* Runs one node method; a failure is shown and counted. */
static void node(void* target, int32_t method, void** args, void* result) {
    char message[LUM_ERROR_BUFFER_SIZE] = "";
    int32_t code = LUM_OK;
    lumNodeExecute(target, method, args, result, message, &code);
    if (code != LUM_OK) {
        fprintf(stderr, "node method %d: code %d: %s\n", (int)method, (int)code, message);
        ++failures;
    }
}

/* A string method: the limit counts the buffer's bytes, terminator included. */
static void text(void* target, int32_t method, char* buffer, int32_t size) {
    void* args[1];
    args[0] = &size;
    buffer[0] = '\0';
    node(target, method, args, buffer);
}

static void printAttributes(void* element) {
    char names[1024];
    char* name;
    text(element, LUM_NODE_ATTRIBUTE_NAMES, names, (int32_t)sizeof names);
    for (name = strtok(names, ","); name != NULL; name = strtok(NULL, ",")) {
        char value[1024] = "";
        int32_t limit = (int32_t)sizeof value;
        void* args[2];
        args[0] = name;
        args[1] = &limit;
        node(element, LUM_NODE_ATTRIBUTE_VALUE, args, value);
        printf(" %s=\"%s\"", name, value);
    }
}

static void walk(void* current, int depth) {
    int32_t type = 0, count = 0, i;
    char typeName[LUM_TYPE_NAME_SIZE];
    char name[256];
    node(current, LUM_NODE_TYPE_CODE, NULL, &type);
    lumTypeToChar(type, typeName);
    text(current, LUM_NODE_NAME, name, (int32_t)sizeof name);
    printf("%*s%s %s", depth * 2, "", typeName, name);
    if (type == LUM_NODE_ELEMENT) printAttributes(current);
    printf("\n");
    node(current, LUM_NODE_CHILD_COUNT, NULL, &count);
    for (i = 0; i < count; ++i) {
        void* child = NULL;
        void* args[1];
        args[0] = &i;
        node(current, LUM_NODE_CHILD_AT, args, &child);
        if (child != NULL) walk(child, depth + 1);
    }
}

/* The document's address is not a node address: its own children are
   reached through lumDocExecute, which answers the same method numbers. */
static void walkDocument(void* document) {
    char message[LUM_ERROR_BUFFER_SIZE] = "";
    int32_t code = LUM_OK, count = 0, i;
    lumDocExecute(document, LUM_DOC_CHILD_COUNT, NULL, &count, message, &code);
    printf("DOCUMENT\n");
    for (i = 0; i < count && code == LUM_OK; ++i) {
        void* child = NULL;
        void* args[1];
        args[0] = &i;
        lumDocExecute(document, LUM_DOC_CHILD_AT, args, &child, message, &code);
        if (child != NULL) walk(child, 1);
    }
    if (code != LUM_OK) ++failures;
}

int main(int argc, char** argv) {
    const char* file = argc > 1 ? argv[1] : EXAMPLES_DIR "/catalog.xml";
    char message[LUM_ERROR_BUFFER_SIZE] = "";
    char encoding[LUM_ENCODING_BUFFER_SIZE] = "";
    int32_t code = LUM_OK;
    void* document = NULL;
    void* root = NULL;

    lumInitParser("UTF-8", message, &code);
    if (code != LUM_OK) {
        fprintf(stderr, "init: code %d: %s\n", (int)code, message);
        return 1;
    }
    /* The document cell: made empty, then replaced by the loaded document.
       The host handle (here 42) comes back from LUM_NODE_OWNER_HANDLE. */
    lumInitDocument(&document, 42, message, &code);
    lumDocLoad(&document, LUM_LOAD_VALIDATE, LUM_LOAD_FROM_FILE, encoding, file, NULL, 0, NULL,
               NULL, 0, NULL, message, &code);
    /* A warning still loads the document; anything else is a failure. */
    if (code != LUM_OK && code != LUM_ERR_PARSE_WARNING) {
        fprintf(stderr, "load %s: code %d: %s\n", file, (int)code, message);
        lumDocDelete(document, message, &code);
        return 1;
    }
    printf("encoding %s\n", encoding);

    /* The document answers the node methods on its own node, and some of
       its own, such as the document element. */
    code = LUM_OK;
    lumDocExecute(document, LUM_DOC_DOCUMENT_ELEMENT, NULL, &root, message, &code);
    if (root != NULL) {
        int64_t handle = 0;
        node(root, LUM_NODE_OWNER_HANDLE, NULL, &handle);
        printf("root of the document of host handle %d\n", (int)handle);
    }
    walkDocument(document);

    lumDocDelete(document, message, &code);
    return failures == 0 && code == LUM_OK ? 0 : 1;
}
