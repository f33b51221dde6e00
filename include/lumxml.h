/*
 * lumxml - XML facilities for a host language runtime.
 *
 * The whole public interface of the library: 26 exported C functions, the
 * callback types the host hands in, and the records shared with the host at
 * fixed byte offsets. Plain C (C99 and C++), no Xerces-C or ICU header.
 *
 * Conventions
 *  - errorBuffer: host memory of at least 257 bytes (256 characters + NUL).
 *  - errorCode:   host int32_t, written only on failure; the host clears it.
 *  - 8-bit strings are in the code page chosen by lumInitParser.
 *  - Document and node addresses are opaque; keep them in 64-bit cells.
 *
 * Every number that crosses the interface (method and command numbers,
 * event kinds, flag bits, result and error codes) has a named constant
 * below, a plain integer macro (usable in switch cases and #if, in C and
 * C++ alike); docs/api.md describes each of them.
 */
#ifndef LUMXML_H
#define LUMXML_H

/* The library's version. The build reads it from here: these three lines
   are the one place where it is set. */
#define LUMXML_VERSION_MAJOR 1
#define LUMXML_VERSION_MINOR 0
#define LUMXML_VERSION_PATCH 0
#define LUMXML_VERSION_STRING "1.0.0"
/* One number that grows with every release: major * 10000 + minor * 100 + patch. */
#define LUMXML_VERSION \
    (LUMXML_VERSION_MAJOR * 10000 + LUMXML_VERSION_MINOR * 100 + LUMXML_VERSION_PATCH)

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#  if defined(LUMXML_BUILDING)
#    define LUM_API __declspec(dllexport)
#  else
#    define LUM_API __declspec(dllimport)
#  endif
#else
#  if defined(LUMXML_BUILDING)
#    define LUM_API __attribute__((visibility("default")))
#  else
#    define LUM_API
#  endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* UTF-16 code unit of file names handed to lumDocSaveW and the writer. */
#if defined(_WIN32)
typedef wchar_t lum_wchar_t;
#elif defined(__cplusplus)
typedef char16_t lum_wchar_t;
#else
typedef uint_least16_t lum_wchar_t; /* same representation as char16_t */
#endif

/* ---- Callback types --------------------------------------------------- */

typedef void (*MemioReservedFn)(void);
typedef void* (*MemioAllocFn)(uint32_t size, const char* sourceFile, int32_t line);
typedef void* (*MemioReallocFn)(void* block, uint32_t size, const char* sourceFile, int32_t line);
typedef int32_t (*StreamWriteFn)(int64_t handle, int32_t one, const void* bytes, uint32_t count,
                                 void* scratch8);
typedef int32_t (*ResolveEntityFn)(void);

/* ---- Node type codes ------------------------------------------------- */

#define LUM_NODE_ELEMENT                       1
#define LUM_NODE_ATTRIBUTE                     2
#define LUM_NODE_TEXT                          3
#define LUM_NODE_CDATA_SECTION                 4
#define LUM_NODE_ENTITY_REFERENCE              5
#define LUM_NODE_ENTITY                        6
#define LUM_NODE_PROCESSING_INSTRUCTION        7
#define LUM_NODE_COMMENT                       8
#define LUM_NODE_DOCUMENT                      9
#define LUM_NODE_DOCUMENT_TYPE                 10
#define LUM_NODE_DOCUMENT_FRAGMENT             11
#define LUM_NODE_NOTATION                      12
/* lumTypeToInt's answer for an unknown name; as the type of
   LUM_DOC_CREATE_NODE and LUM_DOC_CREATE_NODE_NS: make nothing. */
#define LUM_NODE_NONE                          (-1)

/* ---- Buffer sizes the host provides ------------------------------------ */

#define LUM_ERROR_BUFFER_SIZE                  257 /* errorBuffer: 256 characters + NUL */
#define LUM_ENCODING_BUFFER_SIZE               257 /* lumDocLoad encodingOut */
#define LUM_TYPE_NAME_SIZE                     23 /* lumTypeToChar name ("PROCESSING-INSTRUCTION") */

/* ---- Error codes (errorCode cells and SaxParserInstance.errorCode) ----- */

#define LUM_OK                                 0
#define LUM_ERR_NOT_SUPPORTED                  (-1) /* request refused: kind, method or node */
#define LUM_ERR_ENGINE_START                   1 /* XML engine failed to start; SAX: a handler stopped */
#define LUM_ERR_NOT_INITIALIZED                2 /* lumInitParser has not run */
#define LUM_ERR_PARSE                          3 /* exception while parsing; SAX: "Unexpected error" */
#define LUM_ERR_NODE_METHOD_NUMBER             3 /* lumNodeExecute: method number out of range */
#define LUM_ERR_DOC_METHOD_NUMBER              4 /* lumDocExecute: method number out of range */
#define LUM_ERR_CHILD_INDEX                    5 /* no child at the index */
#define LUM_ERR_DOM                            6 /* DOM error; also "]]>" in a CDATA section's value */
#define LUM_ERR_NODE_TYPE                      7 /* method refused for the node's type */
#define LUM_ERR_PARSE_WARNING                  8 /* lumDocLoad: the parser warned */
#define LUM_ERR_PARSE_ERROR                    9 /* lumDocLoad: the parser found an error */
#define LUM_ERR_PARSE_FATAL                    10 /* lumDocLoad: the parser found a fatal error */
#define LUM_ERR_SAVE                           11 /* lumDocSave: file not opened, or an XML exception */
#define LUM_ERR_NO_INPUT_FILE                  11 /* SAX reader: file input without a file name */
#define LUM_ERR_STRING_LENGTH                  12 /* a string does not fit the host's limit */
#define LUM_ERR_UNEXPECTED                     13 /* unexpected failure */
#define LUM_ERR_MEMORY_GROWTH                  80 /* host memory block could not grow */

/* ---- lumInitParser results --------------------------------------------- */

#define LUM_INIT_CODE_PAGE_NOT_FOUND           0 /* the library speaks UTF-8 */
#define LUM_INIT_CODE_PAGE_FOUND               1

/* ---- lumDocLoad ---------------------------------------------------------- */

/* flags bits */
#define LUM_LOAD_VALIDATE                      1
#define LUM_LOAD_NO_NAMESPACES                 2
#define LUM_LOAD_NO_DEFAULT_ENTITY_RESOLUTION  4
/* sourceKind */
#define LUM_LOAD_FROM_FILE                     0 /* file name or URL */
#define LUM_LOAD_FROM_MEMORY                   1 /* memory block */

/* ---- lumDocSave / lumDocSaveW targets ------------------------------------ */

#define LUM_SAVE_TO_FILE                       0
#define LUM_SAVE_TO_MEMORY                     1
#define LUM_SAVE_TO_STREAM                     2
#define LUM_SAVE_NODE_TO_MEMORY                6 /* the cell holds a node: its subtree, no declaration */

/* ---- lumDocExecute methods ----------------------------------------------
   Document and node methods share one numbering; the document answers the
   node methods named here by running them on its own node. */

#define LUM_DOC_CREATE_NODE                    1
#define LUM_DOC_INSERT_BEFORE                  2
#define LUM_DOC_DOCUMENT_ELEMENT               4
#define LUM_DOC_CHILD_COUNT                    5
#define LUM_DOC_PARENT                         7
#define LUM_DOC_CHILD_AT                       8
#define LUM_DOC_CLONE                          9
#define LUM_DOC_REMOVE_CHILD                   10
#define LUM_DOC_REPLACE_CHILD                  11
#define LUM_DOC_OWNER_HANDLE                   17
#define LUM_DOC_TYPE_CODE                      18
#define LUM_DOC_VALUE                          19
#define LUM_DOC_SET_VALUE                      20
#define LUM_DOC_NAME                           21
#define LUM_DOC_IMPORT_NODE                    22
#define LUM_DOC_CREATE_NODE_NS                 30
#define LUM_DOC_NEW_WITH_DOCTYPE               31
#define LUM_DOC_DOCTYPE_PUBLIC_ID              32
#define LUM_DOC_DOCTYPE_SYSTEM_ID              33
#define LUM_DOC_METHOD_LAST                    38 /* numbers 1..38 are methods; the rest are refused */

/* ---- lumNodeExecute methods ---------------------------------------------- */

#define LUM_NODE_INSERT_BEFORE                 2
#define LUM_NODE_REMOVE                        3
#define LUM_NODE_CHILD_COUNT                   5
#define LUM_NODE_INDEX_IN_PARENT               6
#define LUM_NODE_PARENT                        7
#define LUM_NODE_CHILD_AT                      8
#define LUM_NODE_CLONE                         9
#define LUM_NODE_REMOVE_CHILD                  10
#define LUM_NODE_REPLACE_CHILD                 11
#define LUM_NODE_ATTRIBUTE_NAMES               12
#define LUM_NODE_ATTRIBUTE_VALUE               13
#define LUM_NODE_SET_ATTRIBUTE                 14
#define LUM_NODE_REMOVE_ATTRIBUTE              15
#define LUM_NODE_REMOVE_ATTRIBUTE_NODE         16
#define LUM_NODE_OWNER_HANDLE                  17
#define LUM_NODE_TYPE_CODE                     18
#define LUM_NODE_VALUE                         19
#define LUM_NODE_SET_VALUE                     20
#define LUM_NODE_NAME                          21
#define LUM_NODE_NORMALIZE                     23
#define LUM_NODE_NAMESPACE_URI                 26
#define LUM_NODE_PREFIX                        27
#define LUM_NODE_LOCAL_NAME                    28
#define LUM_NODE_SET_PREFIX                    29
#define LUM_NODE_SET_ATTRIBUTE_NODE            34
#define LUM_NODE_ATTRIBUTE_NODE                35
#define LUM_NODE_WHOLE_VALUE                   36
#define LUM_NODE_SET_VALUE_COUNTED             37
#define LUM_NODE_RELEASE_VALUE                 38
#define LUM_NODE_ATTRIBUTE_NS                  39
#define LUM_NODE_METHOD_LAST                   39 /* numbers 1..39 are methods; the rest are refused */

/* ---- SAX reader ----------------------------------------------------------- */

/* SaxParserInstance.flags bits */
#define LUM_SAX_NO_NAMESPACES                  1
#define LUM_SAX_VALIDATE                       2
#define LUM_SAX_NO_DEFAULT_ENTITY_RESOLUTION   4
/* SaxParserInstance.inputKind */
#define LUM_SAX_INPUT_FILE                     0 /* fileName: file or URL */
#define LUM_SAX_INPUT_MEMORY                   1 /* memoryBuffer and memoryLength */
#define LUM_SAX_INPUT_BUFFER                   5 /* read exactly as LUM_SAX_INPUT_MEMORY */
/* SaxParserInstance.entityExpansionLimit: any negative value sets no limit */
#define LUM_SAX_NO_ENTITY_LIMIT                (-1)

/* lumSAXParseFirst and lumSAXParseNext results. (lumSAXParse answers 1
   when it ran, its findings in the record, and 0 when it refused or failed.) */
#define LUM_SAX_DONE                           0 /* no event: the parse ended (errorCode says why, 0 = end of document) */
#define LUM_SAX_MORE                           1 /* an event waits at eventHead */

/* The result of the host's resolve-entity callback that stops the parse
   (any other result lets resolution go on). */
#define LUM_SAX_RESOLVE_STOP                   1

/* SaxParserInstance.state */
#define LUM_SAX_STATE_FIRST_PASS               1 /* only "StartDocument" so far */
#define LUM_SAX_STATE_RESTARTING               2
#define LUM_SAX_STATE_RUNNING                  3
#define LUM_SAX_STATE_ENDED                    4 /* "EndDocument" has been queued */

/* SaxEvent.kind */
#define LUM_SAX_EVENT_EMPTY                    0 /* no name, no arguments (a skipped entity) */
#define LUM_SAX_EVENT_START_DOCUMENT           1
#define LUM_SAX_EVENT_END_DOCUMENT             2
#define LUM_SAX_EVENT_START_PREFIX_MAPPING     3
#define LUM_SAX_EVENT_END_PREFIX_MAPPING       4
#define LUM_SAX_EVENT_START_ELEMENT            5
#define LUM_SAX_EVENT_END_ELEMENT              6
#define LUM_SAX_EVENT_CHARACTERS               7
#define LUM_SAX_EVENT_IGNORABLE_WHITESPACE     8
#define LUM_SAX_EVENT_PROCESSING_INSTRUCTION   9
#define LUM_SAX_EVENT_SKIPPED_ENTITY           10 /* named, never produced */
#define LUM_SAX_EVENT_SET_DOC_LOCATOR          11 /* named, never produced */
#define LUM_SAX_EVENT_UNPARSED_ENTITY_DECL     12
#define LUM_SAX_EVENT_NOTATION_DECL            13
#define LUM_SAX_EVENT_RESOLVE_ENTITY           14
#define LUM_SAX_EVENT_WARNING                  15
#define LUM_SAX_EVENT_ERROR                    16
#define LUM_SAX_EVENT_FATAL_ERROR              17

/* ---- SAX writer -------------------------------------------------------- */

/* lumSAXWriterExecute commands */
#define LUM_WRITER_CREATE                      1
#define LUM_WRITER_FREE                        2
#define LUM_WRITER_GET_STATE                   3
#define LUM_WRITER_RESET                       4
#define LUM_WRITER_STOP                        5
#define LUM_WRITER_ADD_ATTRIBUTE               10
#define LUM_WRITER_DECLARE_NAMESPACE           11
#define LUM_WRITER_RESTART_MEMORY              12
#define LUM_WRITER_OPEN                        21
#define LUM_WRITER_END_DOCUMENT                22
#define LUM_WRITER_START_ELEMENT               23
#define LUM_WRITER_END_ELEMENT                 24
#define LUM_WRITER_CHARACTERS                  25
#define LUM_WRITER_EMPTY_ELEMENT               26
#define LUM_WRITER_DATA_ELEMENT                27
#define LUM_WRITER_COMMENT                     28
#define LUM_WRITER_PROCESSING_INSTRUCTION      29
#define LUM_WRITER_RAW_TEXT                    30
#define LUM_WRITER_DOCTYPE                     31
#define LUM_WRITER_ENTITY_REFERENCE            32
#define LUM_WRITER_CDATA                       33

/* Writer states (the answer of LUM_WRITER_GET_STATE) */
#define LUM_WRITER_STATE_CREATED               1
#define LUM_WRITER_STATE_PROLOG                2
#define LUM_WRITER_STATE_START_TAG_OPEN        3
#define LUM_WRITER_STATE_AFTER_END_TAG         4
#define LUM_WRITER_STATE_AFTER_TEXT            5
#define LUM_WRITER_STATE_ENDED                 6
#define LUM_WRITER_STATE_FAILED                7

/* lumSAXWriterExecute results: success, refusal, or an error code */
#define LUM_WRITER_OK                          0
#define LUM_WRITER_REFUSED                     1
#define LUM_WRITER_ERR_OUTPUT_KIND             3
#define LUM_WRITER_ERR_OPEN                    5
#define LUM_WRITER_ERR_INVALID_NAME            6
#define LUM_WRITER_ERR_SECOND_ROOT             7
#define LUM_WRITER_ERR_END_TAG_MISMATCH        8
#define LUM_WRITER_ERR_ELEMENT_OPEN            9
#define LUM_WRITER_ERR_PREFIX_WITHOUT_URI      10
#define LUM_WRITER_ERR_DUPLICATE_NS_ATTRIBUTE  11
#define LUM_WRITER_ERR_UNBOUND                 12
#define LUM_WRITER_ERR_TEXT_OUTSIDE_ROOT       13
#define LUM_WRITER_ERR_ROOT_NOT_DOCTYPE        14
#define LUM_WRITER_ERR_DOCTYPE_IN_FRAGMENT     15
#define LUM_WRITER_ERR_PREFIX_REBOUND          17
#define LUM_WRITER_ERR_DUPLICATE_ATTRIBUTE     18
#define LUM_WRITER_ERR_UNDECLARED_PREFIX       19
#define LUM_WRITER_ERR_CDATA_END               21
#define LUM_WRITER_ERR_MEMORY                  80
#define LUM_WRITER_ERR_UNEXPECTED              99

/* WriterOptions.outputKind and WriterOptions.standalone */
#define LUM_WRITER_TO_FILE                     1
#define LUM_WRITER_TO_MEMORY_WITH_BOM          2
#define LUM_WRITER_TO_STREAM                   3
#define LUM_WRITER_TO_MEMORY                   5
#define LUM_WRITER_STANDALONE_OMIT             0
#define LUM_WRITER_STANDALONE_YES              1
#define LUM_WRITER_STANDALONE_NO               2 /* any value but 0 and 1 */

/* ---- Host memory functions ------------------------------------------------
   The line argument with which the library calls the functions of
   lumMemioInit, naming what the block is for. */

#define LUM_MEMIO_LINE_NEW_BLOCK               84 /* alloc: the first block of an output */
#define LUM_MEMIO_LINE_GROW                    175 /* realloc: growth while writing */
#define LUM_MEMIO_LINE_REPLACEMENT             202 /* alloc: a fresh block after a failed growth */
#define LUM_MEMIO_LINE_TRIM                    231 /* realloc: the final trim of a saved document */

/* ---- Attribute lists -------------------------------------------------- */

typedef struct SaxAttribute {
    char* localName; /*  0 */
    char* qName;     /*  8 */
    char* uri;       /* 16 */
    char* type;      /* 24 */
    char* value;     /* 32 */
} SaxAttribute;

typedef struct SaxAttrList {
    int32_t capacity;      /*  0 */
    int32_t count;         /*  4 */
    SaxAttribute* entries; /*  8 */
} SaxAttrList;

/* ---- SAX reader records ----------------------------------------------- */

typedef struct SaxEvent SaxEvent;
struct SaxEvent {
    uint32_t kind;     /*  0 */
    uint32_t reserved4;
    const char* name;  /*  8 */
    uint32_t argCount; /* 16 */
    uint32_t reserved20;
    void* arg1;        /* 24 */
    void* arg2;        /* 32 */
    void* arg3;        /* 40 */
    void* arg4;        /* 48: "StartElement" keeps its SaxAttrList in place in arg4/arg5 */
    void* arg5;        /* 56 */
    SaxEvent* next;    /* 64 */
};

/* The attribute list of a "StartElement" event, lying in arg4 and arg5. */
#define LUM_SAX_EVENT_ATTRIBUTES(event) ((SaxAttrList*)(void*)&(event)->arg4)

typedef struct SaxParserInstance {
    void* reader;                        /*   0 library */
    uint32_t flags;                      /*   8 host: LUM_SAX_NO_NAMESPACES, LUM_SAX_VALIDATE, ... */
    uint32_t reserved12;                 /*  12 */
    void* scanToken;                     /*  16 library */
    void* locator;                       /*  24 library */
    void* inputSource;                   /*  32 library */
    const char* searchPath;              /*  40 host */
    const char* schemaLocation;          /*  48 host */
    const char* noNamespaceSchemaLocation; /* 56 host */
    int32_t inputKind;                   /*  64 host: LUM_SAX_INPUT_FILE, _MEMORY or _BUFFER */
    uint32_t reserved68;                 /*  68 */
    const char* fileName;                /*  72 host */
    void* reserved80;                    /*  80 */
    const void* memoryBuffer;            /*  88 host */
    uint32_t memoryLength;               /*  96 host */
    uint8_t reserved100[16];             /* 100 */
    char errorText[256];                 /* 116 */
    uint32_t reserved372;                /* 372 */
    int32_t errorCode;                   /* 376 */
    int32_t eventCount;                  /* 380 */
    int32_t state;                       /* 384 */
    int32_t entityExpansionLimit;        /* 388 host: >= 0 installs a limit */
    uint32_t column;                     /* 392 */
    uint32_t line;                       /* 396 */
    char* publicId;                      /* 400 library */
    char* systemId;                      /* 408 library */
    SaxEvent* eventHead;                 /* 416 */
    SaxEvent* eventTail;                 /* 424 */
    void* reserved432;                   /* 432 cleared by the reset */
    ResolveEntityFn resolveEntityCallback; /* 440 host */
} SaxParserInstance;

/* ---- SAX writer records ----------------------------------------------- */

typedef struct SAXWriter SAXWriter; /* opaque */

typedef struct WriterOptions {
    const char* version;        /*  0 */
    const char* encoding;       /*  8 */
    int32_t standalone;         /* 16 */
    int32_t formatted;          /* 20 */
    int32_t fragment;           /* 24 */
    int32_t strict;             /* 28 */
    const char* fileName;       /* 32 */
    const lum_wchar_t* wideFileName; /* 40 */
    int32_t outputKind;         /* 48: LUM_WRITER_TO_FILE, ... */
    uint32_t reserved52;        /* 52 */
    int64_t streamHandle;       /* 56 */
    void* memoryBuffer;         /* 64 out */
    uint32_t* memoryLength;     /* 72 out: live byte count */
    StreamWriteFn streamWrite;  /* 80 */
    char* message;              /* 88 out */
} WriterOptions;

typedef struct WriterArgs {
    void* arg0; /*  0 */
    void* arg1; /*  8 */
    void* arg2; /* 16 */
    void* arg3; /* 24 */
} WriterArgs;

/* ---- Layout checks ---------------------------------------------------- */

#if defined(__cplusplus)
#  define LUM_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#else
#  define LUM_STATIC_ASSERT_JOIN2(a, b) a##b
#  define LUM_STATIC_ASSERT_JOIN(a, b) LUM_STATIC_ASSERT_JOIN2(a, b)
   /* C99 has no _Static_assert: a negative array size fails the build. */
#  define LUM_STATIC_ASSERT(cond, msg) \
       typedef char LUM_STATIC_ASSERT_JOIN(lum_static_assert_, __LINE__)[(cond) ? 1 : -1]
#endif

#if UINTPTR_MAX == 0xFFFFFFFFFFFFFFFFu
LUM_STATIC_ASSERT(sizeof(SaxAttribute) == 40, "SaxAttribute size");
LUM_STATIC_ASSERT(offsetof(SaxAttribute, localName) == 0, "SaxAttribute.localName");
LUM_STATIC_ASSERT(offsetof(SaxAttribute, qName) == 8, "SaxAttribute.qName");
LUM_STATIC_ASSERT(offsetof(SaxAttribute, uri) == 16, "SaxAttribute.uri");
LUM_STATIC_ASSERT(offsetof(SaxAttribute, type) == 24, "SaxAttribute.type");
LUM_STATIC_ASSERT(offsetof(SaxAttribute, value) == 32, "SaxAttribute.value");

LUM_STATIC_ASSERT(sizeof(SaxAttrList) == 16, "SaxAttrList size");
LUM_STATIC_ASSERT(offsetof(SaxAttrList, capacity) == 0, "SaxAttrList.capacity");
LUM_STATIC_ASSERT(offsetof(SaxAttrList, count) == 4, "SaxAttrList.count");
LUM_STATIC_ASSERT(offsetof(SaxAttrList, entries) == 8, "SaxAttrList.entries");

LUM_STATIC_ASSERT(sizeof(SaxEvent) == 72, "SaxEvent size");
LUM_STATIC_ASSERT(offsetof(SaxEvent, kind) == 0, "SaxEvent.kind");
LUM_STATIC_ASSERT(offsetof(SaxEvent, name) == 8, "SaxEvent.name");
LUM_STATIC_ASSERT(offsetof(SaxEvent, argCount) == 16, "SaxEvent.argCount");
LUM_STATIC_ASSERT(offsetof(SaxEvent, arg1) == 24, "SaxEvent.arg1");
LUM_STATIC_ASSERT(offsetof(SaxEvent, arg2) == 32, "SaxEvent.arg2");
LUM_STATIC_ASSERT(offsetof(SaxEvent, arg3) == 40, "SaxEvent.arg3");
LUM_STATIC_ASSERT(offsetof(SaxEvent, arg4) == 48, "SaxEvent.arg4");
LUM_STATIC_ASSERT(offsetof(SaxEvent, arg5) == 56, "SaxEvent.arg5");
LUM_STATIC_ASSERT(offsetof(SaxEvent, next) == 64, "SaxEvent.next");

LUM_STATIC_ASSERT(sizeof(SaxParserInstance) == 448, "SaxParserInstance size");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, reader) == 0, "SaxParserInstance.reader");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, flags) == 8, "SaxParserInstance.flags");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, reserved12) == 12, "SaxParserInstance.reserved12");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, scanToken) == 16, "SaxParserInstance.scanToken");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, locator) == 24, "SaxParserInstance.locator");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, inputSource) == 32, "SaxParserInstance.inputSource");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, searchPath) == 40, "SaxParserInstance.searchPath");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, schemaLocation) == 48, "SaxParserInstance.schemaLocation");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, noNamespaceSchemaLocation) == 56,
                  "SaxParserInstance.noNamespaceSchemaLocation");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, inputKind) == 64, "SaxParserInstance.inputKind");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, reserved68) == 68, "SaxParserInstance.reserved68");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, fileName) == 72, "SaxParserInstance.fileName");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, reserved80) == 80, "SaxParserInstance.reserved80");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, memoryBuffer) == 88, "SaxParserInstance.memoryBuffer");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, memoryLength) == 96, "SaxParserInstance.memoryLength");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, reserved100) == 100, "SaxParserInstance.reserved100");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, errorText) == 116, "SaxParserInstance.errorText");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, reserved372) == 372, "SaxParserInstance.reserved372");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, errorCode) == 376, "SaxParserInstance.errorCode");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, eventCount) == 380, "SaxParserInstance.eventCount");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, state) == 384, "SaxParserInstance.state");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, entityExpansionLimit) == 388,
                  "SaxParserInstance.entityExpansionLimit");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, column) == 392, "SaxParserInstance.column");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, line) == 396, "SaxParserInstance.line");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, publicId) == 400, "SaxParserInstance.publicId");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, systemId) == 408, "SaxParserInstance.systemId");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, eventHead) == 416, "SaxParserInstance.eventHead");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, eventTail) == 424, "SaxParserInstance.eventTail");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, reserved432) == 432, "SaxParserInstance.reserved432");
LUM_STATIC_ASSERT(offsetof(SaxParserInstance, resolveEntityCallback) == 440,
                  "SaxParserInstance.resolveEntityCallback");

LUM_STATIC_ASSERT(sizeof(WriterOptions) == 96, "WriterOptions size");
LUM_STATIC_ASSERT(offsetof(WriterOptions, version) == 0, "WriterOptions.version");
LUM_STATIC_ASSERT(offsetof(WriterOptions, encoding) == 8, "WriterOptions.encoding");
LUM_STATIC_ASSERT(offsetof(WriterOptions, standalone) == 16, "WriterOptions.standalone");
LUM_STATIC_ASSERT(offsetof(WriterOptions, formatted) == 20, "WriterOptions.formatted");
LUM_STATIC_ASSERT(offsetof(WriterOptions, fragment) == 24, "WriterOptions.fragment");
LUM_STATIC_ASSERT(offsetof(WriterOptions, strict) == 28, "WriterOptions.strict");
LUM_STATIC_ASSERT(offsetof(WriterOptions, fileName) == 32, "WriterOptions.fileName");
LUM_STATIC_ASSERT(offsetof(WriterOptions, wideFileName) == 40, "WriterOptions.wideFileName");
LUM_STATIC_ASSERT(offsetof(WriterOptions, outputKind) == 48, "WriterOptions.outputKind");
LUM_STATIC_ASSERT(offsetof(WriterOptions, reserved52) == 52, "WriterOptions.reserved52");
LUM_STATIC_ASSERT(offsetof(WriterOptions, streamHandle) == 56, "WriterOptions.streamHandle");
LUM_STATIC_ASSERT(offsetof(WriterOptions, memoryBuffer) == 64, "WriterOptions.memoryBuffer");
LUM_STATIC_ASSERT(offsetof(WriterOptions, memoryLength) == 72, "WriterOptions.memoryLength");
LUM_STATIC_ASSERT(offsetof(WriterOptions, streamWrite) == 80, "WriterOptions.streamWrite");
LUM_STATIC_ASSERT(offsetof(WriterOptions, message) == 88, "WriterOptions.message");

LUM_STATIC_ASSERT(sizeof(WriterArgs) == 32, "WriterArgs size");
LUM_STATIC_ASSERT(offsetof(WriterArgs, arg0) == 0, "WriterArgs.arg0");
LUM_STATIC_ASSERT(offsetof(WriterArgs, arg1) == 8, "WriterArgs.arg1");
LUM_STATIC_ASSERT(offsetof(WriterArgs, arg2) == 16, "WriterArgs.arg2");
LUM_STATIC_ASSERT(offsetof(WriterArgs, arg3) == 24, "WriterArgs.arg3");
#endif

/* ---- Exports ----------------------------------------------------------- */

/* Library */
LUM_API int32_t lumInitParser(const char* codePage, char* errorBuffer, int32_t* errorCode);
LUM_API void lumMemioInit(MemioReservedFn reserved, MemioAllocFn alloc, MemioReallocFn realloc);

/* Documents */
LUM_API void lumInitDocument(void** documentOut, int64_t hostHandle, char* errorBuffer,
                             int32_t* errorCode);
LUM_API void lumDocLoad(void** document, uint32_t flags, uint32_t sourceKind, char* encodingOut,
                        const char* fileName, const void* memory, uint32_t memoryLength,
                        const char* systemId, const int32_t* entityExpansionLimit, int64_t spare,
                        const char* const* locations, char* errorBuffer, int32_t* errorCode);
LUM_API void* lumCreateInputSource(const char* fileName, const void* memory, int32_t memoryLength);
LUM_API void lumDocDelete(void* document, char* errorBuffer, int32_t* errorCode);
LUM_API void lumDocExecute(void* document, int32_t method, void** args, void* result,
                           char* errorBuffer, int32_t* errorCode);
LUM_API void lumDocSave(void** document, int32_t target, uint8_t charEscapes,
                        uint8_t attributeEscapes, uint8_t noByteOrderMark, const char* encoding,
                        const char* fileName, void** memoryOut, uint32_t* memoryLength,
                        int64_t streamHandle, StreamWriteFn streamWrite, char* errorBuffer,
                        int32_t* errorCode);
LUM_API void lumDocSaveW(void** document, int32_t target, uint8_t charEscapes,
                         uint8_t attributeEscapes, uint8_t noByteOrderMark, const char* encoding,
                         const lum_wchar_t* fileName, void** memoryOut, uint32_t* memoryLength,
                         int64_t streamHandle, StreamWriteFn streamWrite, char* errorBuffer,
                         int32_t* errorCode);

/* Nodes */
LUM_API void lumNodeExecute(void* node, int32_t method, void** args, void* result,
                            char* errorBuffer, int32_t* errorCode);
LUM_API void lumNodeDelete(void);
LUM_API void lumTypeToChar(int32_t type, char* name);
LUM_API int32_t lumTypeToInt(const char* name);

/* SAX reader */
LUM_API int32_t lumSAXParse(SaxParserInstance* instance);
LUM_API int32_t lumSAXParseFirst(SaxParserInstance* instance);
LUM_API int32_t lumSAXParseNext(SaxParserInstance* instance);
LUM_API void lumSAXDeleteParserInstance(SaxParserInstance* instance);
LUM_API void lumSAXClearCallbackData(SaxEvent* event);

/* Attribute lists */
LUM_API SaxAttrList* lumSAXNewAttrList(int32_t capacity);
LUM_API char* lumSAXInsertAttribute(SaxAttrList** list, const char* qName, const char* value,
                                    const char* uri, const char* type);
LUM_API char* lumSAXSetAttribute(SaxAttribute* entry, const char* qName, const char* value,
                                 const char* uri, const char* type);
LUM_API char* lumSAXSetAttributeValue(SaxAttribute* entry, const char* value);
LUM_API void lumSAXClearAttribute(SaxAttribute* entry);
LUM_API void lumSAXDeleteAttrList(SaxAttrList* list);
LUM_API void lumSAXFixAttrMem(char** slot, const char* text);

/* SAX writer */
LUM_API int32_t lumSAXWriterExecute(SAXWriter* writer, int32_t command, WriterOptions* options,
                                    WriterArgs* args);

#ifdef __cplusplus
}
#endif

#endif /* LUMXML_H */
