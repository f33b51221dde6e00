/* Builds a small document node by node and saves it to a memory block,
 * which the host then owns and frees.
 *
 * Shows: LUM_DOC_CREATE_NODE, LUM_NODE_INSERT_BEFORE, LUM_NODE_SET_ATTRIBUTE,
 * LUM_NODE_SET_VALUE, lumDocSave with LUM_SAVE_TO_MEMORY and
 * LUM_SAVE_NODE_TO_MEMORY, lumMemioInit. */
#include <stdio.h>
#include <stdlib.h>

#include <lumxml.h>

static char message[LUM_ERROR_BUFFER_SIZE];
static int32_t code = LUM_OK;

static void check(const char* what) {
    if (code != LUM_OK) {
        fprintf(stderr, "%s: code %d: %s\n", what, (int)code, message);
        exit(1);
    }
}

/* The host's allocator for saved blocks: the line names the call site
   (LUM_MEMIO_LINE_NEW_BLOCK, LUM_MEMIO_LINE_GROW, ...). */
static void* hostAlloc(uint32_t size, const char* sourceFile, int32_t line) {
    (void)sourceFile;
    (void)line;
    return malloc(size);
}
static void* hostRealloc(void* block, uint32_t size, const char* sourceFile, int32_t line) {
    (void)sourceFile;
    (void)line;
    return realloc(block, size);
}

static void* createNode(void* document, const char* name, int32_t type) {
    void* made = NULL;
    void* args[2];
    args[0] = (void*)name;
    args[1] = &type;
    lumDocExecute(document, LUM_DOC_CREATE_NODE, args, &made, message, &code);
    check("create node");
    return made;
}

/* Appends `child` to `parent` (a null reference child appends). The
   document is not a node address: it takes the same method number through
   lumDocExecute. */
static void append(void* parent, void* child, int parentIsDocument) {
    void* args[2];
    args[0] = child;
    args[1] = NULL;
    if (parentIsDocument)
        lumDocExecute(parent, LUM_DOC_INSERT_BEFORE, args, NULL, message, &code);
    else
        lumNodeExecute(parent, LUM_NODE_INSERT_BEFORE, args, NULL, message, &code);
    check("insert");
}

static void saveAndPrint(void* cell, int32_t target, const char* encoding) {
    void* block = NULL;
    uint32_t length = 0;
    lumDocSave(&cell, target, 0, 0, 1, encoding, NULL, &block, &length, 0, NULL, message,
               &code);
    check("save");
    fwrite(block, 1, length, stdout);
    printf("\n(%u bytes)\n", (unsigned)length);
    free(block); /* the block is the host's, from hostAlloc */
}

int main(void) {
    void* document = NULL;
    void *root, *item, *text;
    void* args[2];

    lumInitParser("UTF-8", message, &code);
    check("init");
    lumMemioInit(NULL, hostAlloc, hostRealloc);
    lumInitDocument(&document, 1, message, &code);
    check("new document");

    root = createNode(document, "inventory", LUM_NODE_ELEMENT);
    append(document, root, 1);
    item = createNode(document, "item", LUM_NODE_ELEMENT);
    append(root, item, 0);
    args[0] = "sku";
    args[1] = "A-7";
    lumNodeExecute(item, LUM_NODE_SET_ATTRIBUTE, args, NULL, message, &code);
    check("set attribute");
    text = createNode(document, NULL, LUM_NODE_TEXT); /* text nodes start empty */
    args[0] = "nuts & bolts";
    lumNodeExecute(text, LUM_NODE_SET_VALUE, args, NULL, message, &code);
    check("set value");
    append(item, text, 0);

    saveAndPrint(document, LUM_SAVE_TO_MEMORY, "UTF-8");
    saveAndPrint(item, LUM_SAVE_NODE_TO_MEMORY, NULL); /* a subtree, no declaration */

    lumDocDelete(document, message, &code);
    check("delete");
    return 0;
}
