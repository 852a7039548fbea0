#include <zel/zelVersion.h>

#define ZEL_TEXT_OF(number) #number
#define ZEL_VERSION_TEXT(major, minor) ZEL_TEXT_OF(major) "." ZEL_TEXT_OF(minor)

const char* const libzelVersion = ZEL_VERSION_TEXT(ZEL_VERSION_MAJOR, ZEL_VERSION_MINOR);
