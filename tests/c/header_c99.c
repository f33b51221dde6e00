/* The public header in a C99 translation unit, used as a C host would. */
#include <stdio.h>
#include <string.h>

#include "lumxml.h"

int main(void) {
    char name[23];
    SaxParserInstance instance;
    WriterOptions options;
    WriterArgs args;
    SaxEvent event;
    memset(&instance, 0, sizeof instance);
    memset(&options, 0, sizeof options);
    memset(&args, 0, sizeof args);
    memset(&event, 0, sizeof event);
    if (LUM_SAX_EVENT_ATTRIBUTES(&event) != (SaxAttrList*)(void*)&event.arg4) return 1;
    lumTypeToChar(LUM_NODE_COMMENT, name);
    if (strcmp(name, "COMMENT") != 0) return 2;
    if (lumTypeToInt("comment") != LUM_NODE_COMMENT) return 3;
    if (sizeof instance != 448 || sizeof options != 96 || sizeof args != 32) return 4;
    puts("ok");
    return 0;
}
