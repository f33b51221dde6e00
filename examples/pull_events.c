/* Reads a document from memory with the pull reader and prints every event
 * as the host receives it, with its line and column.
 *
 * Shows: the SaxParserInstance record, lumSAXParseFirst/lumSAXParseNext,
 * event kinds and arguments, the attribute list of a start element,
 * lumSAXDeleteParserInstance. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <lumxml.h>

static const char document[] =
    "<?xml version=\"1.0\"?>\n"
    "<order xmlns=\"urn:example:orders\" id=\"7\">\n"
    "  <line qty=\"2\">Lamp &amp; shade</line>\n"
    "  <?audit done?>\n"
    "</order>\n";

static const char* text(void* slot) { return slot != NULL ? (const char*)slot : "(null)"; }

static void printEvent(const SaxParserInstance* record, const SaxEvent* event) {
    printf("%u:%u %s", (unsigned)record->line, (unsigned)record->column,
           event->name != NULL ? event->name : "(no name)");
    switch (event->kind) {
    case LUM_SAX_EVENT_START_ELEMENT: {
        const SaxAttrList* list = LUM_SAX_EVENT_ATTRIBUTES(event);
        int32_t i;
        printf(" %s uri=%s", text(event->arg3), text(event->arg1));
        for (i = 0; list->entries != NULL && i < list->count; ++i)
            printf(" %s=\"%s\"", list->entries[i].qName, list->entries[i].value);
        break;
    }
    case LUM_SAX_EVENT_END_ELEMENT:
        printf(" %s", text(event->arg3));
        break;
    case LUM_SAX_EVENT_CHARACTERS:
    case LUM_SAX_EVENT_IGNORABLE_WHITESPACE:
        /* arg2 holds the length in UTF-16 units in its low 32 bits */
        printf(" %u units", (unsigned)(uintptr_t)event->arg2);
        break;
    case LUM_SAX_EVENT_PROCESSING_INSTRUCTION:
        printf(" %s %s", text(event->arg1), text(event->arg2));
        break;
    case LUM_SAX_EVENT_START_PREFIX_MAPPING:
        printf(" %s -> %s", text(event->arg1), text(event->arg2));
        break;
    case LUM_SAX_EVENT_WARNING:
    case LUM_SAX_EVENT_ERROR:
    case LUM_SAX_EVENT_FATAL_ERROR:
        printf(" %s", text(event->arg1));
        break;
    default:
        break;
    }
    printf("\n");
}

int main(void) {
    char message[LUM_ERROR_BUFFER_SIZE] = "";
    int32_t code = LUM_OK, result;
    int ended = 0;
    /* The host allocates and zero-fills the record, then fills in the input. */
    SaxParserInstance* record = calloc(1, sizeof *record);
    if (record == NULL) return 1;
    lumInitParser("UTF-8", message, &code);
    if (code != LUM_OK) return 1;

    record->inputKind = LUM_SAX_INPUT_MEMORY;
    record->memoryBuffer = document;
    record->memoryLength = (uint32_t)strlen(document);
    record->entityExpansionLimit = LUM_SAX_NO_ENTITY_LIMIT;

    for (result = lumSAXParseFirst(record); result == LUM_SAX_MORE;
         result = lumSAXParseNext(record)) {
        const SaxEvent* event = record->eventHead; /* the library's; never freed by the host */
        if (event == NULL) continue;
        printEvent(record, event);
        if (event->kind == LUM_SAX_EVENT_END_DOCUMENT) ended = 1;
    }
    /* LUM_SAX_DONE with errorCode 0 is the normal end. Well-formedness and
       validity errors arrive as events (LUM_SAX_EVENT_FATAL_ERROR, ...). */
    printf("end: code %d %s\n", (int)record->errorCode, record->errorText);
    code = record->errorCode;
    lumSAXDeleteParserInstance(record);
    free(record);
    return code == LUM_OK && ended ? 0 : 1;
}
