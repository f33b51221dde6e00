/* Writes a document with the SAX writer into a memory block, indented and
 * with the strict checks on, then shows what a strict failure looks like.
 *
 * Shows: lumSAXWriterExecute commands, WriterOptions, WriterArgs, an
 * attribute list made with lumSAXInsertAttribute, result codes. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <lumxml.h>

static SAXWriter* writer = NULL;
static WriterOptions options;

/* One command with up to four arguments; answers the writer's result. */
static int32_t run(int32_t command, const void* a0, const void* a1, const void* a2,
                   const void* a3) {
    WriterArgs args;
    int32_t result;
    args.arg0 = (void*)a0;
    args.arg1 = (void*)a1;
    args.arg2 = (void*)a2;
    args.arg3 = (void*)a3;
    result = lumSAXWriterExecute(writer, command, &options, &args);
    if (command == LUM_WRITER_CREATE || command == LUM_WRITER_RESET)
        writer = (SAXWriter*)args.arg0;
    return result;
}

static void openMemory(void) {
    memset(&options, 0, sizeof options);
    options.version = "1.0";
    options.encoding = "UTF-8";
    options.formatted = 1;
    options.strict = 1;
    options.outputKind = LUM_WRITER_TO_MEMORY;
}

int main(void) {
    char message[LUM_ERROR_BUFFER_SIZE] = "";
    int32_t code = LUM_OK, result;
    uint32_t length;
    SaxAttrList* attributes = NULL;

    lumInitParser("UTF-8", message, &code);
    if (code != LUM_OK) return 1;
    run(LUM_WRITER_CREATE, NULL, NULL, NULL, NULL);
    openMemory();
    if (run(LUM_WRITER_OPEN, NULL, NULL, NULL, NULL) != LUM_WRITER_OK) return 1;

    lumSAXInsertAttribute(&attributes, "version", "2", NULL, NULL);
    run(LUM_WRITER_START_ELEMENT, "feed", "urn:example:feed", attributes, NULL);
    run(LUM_WRITER_ADD_ATTRIBUTE, "lang", "en", NULL, NULL);
    run(LUM_WRITER_COMMENT, "two entries", NULL, NULL, NULL);
    run(LUM_WRITER_DATA_ELEMENT, "title", "Tides & times", "urn:example:feed", NULL);
    run(LUM_WRITER_EMPTY_ELEMENT, "entry", "urn:example:feed", NULL, NULL);
    run(LUM_WRITER_START_ELEMENT, "entry", "urn:example:feed", NULL, NULL);
    run(LUM_WRITER_CDATA, "x < y", NULL, NULL, NULL);
    run(LUM_WRITER_END_ELEMENT, "entry", "urn:example:feed", NULL, NULL);
    run(LUM_WRITER_END_ELEMENT, "feed", "urn:example:feed", NULL, NULL);
    result = run(LUM_WRITER_END_DOCUMENT, NULL, NULL, NULL, NULL);
    lumSAXDeleteAttrList(attributes);
    if (result != LUM_WRITER_OK) return 1;

    /* The block is the host's now; its length cell stays readable until the
       writer is reset or freed. */
    length = *options.memoryLength;
    fwrite(options.memoryBuffer, 1, length, stdout);
    free(options.memoryBuffer);

    /* Strict mode refuses a second root element: the answer is the code,
       the writer closes its output and takes nothing more. */
    run(LUM_WRITER_RESET, NULL, NULL, NULL, NULL);
    openMemory();
    options.formatted = 0;
    run(LUM_WRITER_OPEN, NULL, NULL, NULL, NULL);
    run(LUM_WRITER_EMPTY_ELEMENT, "first", NULL, NULL, NULL);
    result = run(LUM_WRITER_EMPTY_ELEMENT, "second", NULL, NULL, NULL);
    printf("second root: result %d (LUM_WRITER_ERR_SECOND_ROOT is %d), state %d\n", (int)result,
           LUM_WRITER_ERR_SECOND_ROOT, (int)run(LUM_WRITER_GET_STATE, NULL, NULL, NULL, NULL));
    run(LUM_WRITER_FREE, NULL, NULL, NULL, NULL);
    return result == LUM_WRITER_ERR_SECOND_ROOT ? 0 : 1;
}
