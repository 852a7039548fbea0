#ifndef ZEL_TYPE_NAMES_H
#define ZEL_TYPE_NAMES_H

#include <zel/zelColor.h>
#include <zel/zelDataSize.h>
#include <zel/zelExport.h>
#include <zel/zelOrientation.h>

// The name of one value of an enumeration for a human reader, "unknown" for a value that is not
// one. The text is constant and never freed. For any thread.

ZEL_API const char* zelDataTypeName(zelDataType type);
ZEL_API const char* zelOrientationName(zelOrientation orientation);
ZEL_API const char* zelOrderName(zelOrder order);
ZEL_API const char* zelColorModelName(zelColorModel cm);
ZEL_API const char* zelCompressionName(zelCompression compress);

#endif
