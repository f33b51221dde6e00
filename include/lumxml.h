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
 */
#ifndef LUMXML_H
#define LUMXML_H

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

enum {
    LUM_NODE_ELEMENT = 1,
    LUM_NODE_ATTRIBUTE = 2,
    LUM_NODE_TEXT = 3,
    LUM_NODE_CDATA_SECTION = 4,
    LUM_NODE_ENTITY_REFERENCE = 5,
    LUM_NODE_ENTITY = 6,
    LUM_NODE_PROCESSING_INSTRUCTION = 7,
    LUM_NODE_COMMENT = 8,
    LUM_NODE_DOCUMENT = 9,
    LUM_NODE_DOCUMENT_TYPE = 10,
    LUM_NODE_DOCUMENT_FRAGMENT = 11,
    LUM_NODE_NOTATION = 12
};

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
    uint32_t flags;                      /*   8 host: 1 no namespaces, 2 validate, 4 no default entity resolution */
    uint32_t reserved12;                 /*  12 */
    void* scanToken;                     /*  16 library */
    void* locator;                       /*  24 library */
    void* inputSource;                   /*  32 library */
    const char* searchPath;              /*  40 host */
    const char* schemaLocation;          /*  48 host */
    const char* noNamespaceSchemaLocation; /* 56 host */
    int32_t inputKind;                   /*  64 host: 0 file/URL, 1 or 5 memory */
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
    int32_t outputKind;         /* 48: 1 file, 2 memory + BOM, 3 stream, 5 memory */
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
