#ifndef ZEL_COLOR_H
#define ZEL_COLOR_H

#include <zel/zelExport.h>

/// What the channels of an image mean. 0 stands for a model not chosen.
enum zelColorModel : int {
    zelNegative = 1,  ///< one channel, 0 is white
    zelLuminance = 2, ///< one channel, 0 is black
    zelRGB = 3,
    zelRGBPalette = 4, ///< one channel of indexes into a colour map
    zelRGBA = 5,
    zelHSV = 6,
    zelCMY = 7,
    zelCMYK = 8,
    zelBGR = 9,
    zelABGR = 10,
    zelMultiSpectral = 11, ///< any number of channels
    zelYCC = 12,
    zelLuminanceAlpha = 13
};

/// How the channels of a block of pixels lie in memory, fastest index first. Each is a single bit,
/// so that an int holds a set of orders. 0 stands for an order not chosen.
enum zelOrder : int {
    zelInterleaved = 1, ///< c, x, y, z: the channels of a pixel are adjacent
    zelSequential = 2,  ///< x, c, y, z: a row of each channel in turn
    zelSeparate = 4     ///< x, y, c, z: a plane of each channel in turn
};

/// How a file's pixels are compressed. 0 stands for a compression not chosen.
enum zelCompression : int {
    zelUnknownCompression = -1,
    zelNoCompression = 1,
    zelOSKRLE = 2,
    zelCCITTFAX3 = 3,
    zelCCITTFAX4 = 4,
    zelLZW = 5,
    zelJPEG = 6,
    zelPACKBITS = 7,
    zelZIP = 8
};

// Pure functions, for any thread.

/// The channels of a model: 0 for zelMultiSpectral, which fixes none; -1 for a value that is not a
/// model.
ZEL_API int zelColorModelChans(zelColorModel cm);

/// 1 if the model has an alpha channel, else 0.
ZEL_API int zelColorModelHasAlpha(zelColorModel cm);

/// The natural model for a number of channels: 1 luminance, 2 luminance and alpha, 3 RGB, 4 RGBA,
/// any other number zelMultiSpectral.
ZEL_API zelColorModel zelColorModelFromChans(int nchans);

#endif
