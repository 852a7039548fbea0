#ifndef ZEL_H
#define ZEL_H

/// All of the library's public headers.

#include <zel/zelBitArray.h>
#include <zel/zelClassList.h>
#include <zel/zelColor.h>
#include <zel/zelColormap.h>
#include <zel/zelConfig.h>
#include <zel/zelConvIter.h>
#include <zel/zelConverter.h>
#include <zel/zelCoord.h>
#include <zel/zelDataSize.h>
#include <zel/zelDatabase.h>
#include <zel/zelDbMatch.h>
#include <zel/zelDictionary.h>
#include <zel/zelError.h>
#include <zel/zelExport.h>
#include <zel/zelFile.h>
#include <zel/zelFileConfig.h>
#include <zel/zelFileDesc.h>
#include <zel/zelFormat.h>
#include <zel/zelFormatDB.h>
#include <zel/zelHashTable.h>
#include <zel/zelList.h>
#include <zel/zelLut.h>
#include <zel/zelOSKColormap.h>
#include <zel/zelOrientation.h>
#include <zel/zelPixel.h>
#include <zel/zelTag.h>
#include <zel/zelTile.h>
#include <zel/zelTileIter.h>
#include <zel/zelTypeNames.h>
#include <zel/zelVersion.h>

#endif
