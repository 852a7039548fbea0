#include <zel/zelColor.h>

int zelColorModelChans(zelColorModel cm) {
    switch (cm) {
    case zelNegative:
    case zelLuminance:
    case zelRGBPalette:
        return 1;
    case zelLuminanceAlpha:
        return 2;
    case zelRGB:
    case zelHSV:
    case zelCMY:
    case zelBGR:
    case zelYCC:
        return 3;
    case zelRGBA:
    case zelCMYK:
    case zelABGR:
        return 4;
    case zelMultiSpectral:
        return 0;
    default:
        return -1;
    }
}

int zelColorModelHasAlpha(zelColorModel cm) {
    return cm == zelRGBA || cm == zelABGR || cm == zelLuminanceAlpha;
}

zelColorModel zelColorModelFromChans(int nchans) {
    switch (nchans) {
    case 1:
        return zelLuminance;
    case 2:
        return zelLuminanceAlpha;
    case 3:
        return zelRGB;
    case 4:
        return zelRGBA;
    default:
        return zelMultiSpectral;
    }
}
