#ifndef ZEL_TESTS_PLUGIN_CHECK_FAULTY_FORMAT_H
#define ZEL_TESTS_PLUGIN_CHECK_FAULTY_FORMAT_H

namespace zel::test {

/// What the format of the tests does wrong.
enum class Fault {
    none,
    // of the format
    claimsFloats,
    prefersDoubles,
    prefersWiderPages,
    deniesPaging,
    takesSizesBelowZero,
    makesOtherType,
    // of pixels
    losesLastOddRow,
    shiftsLaterPages,
    forgetsOrientation,
    forgetsColorModel,
    hasNoCompression,
    hasNoIdentity,
    readsInTurn,
    forgetsPartialPages,
    leavesNoise,
    // of several images
    takesAnyImage,
    staysAtFirstImage,
    hidesNewSize,
    keepsLaterOffset,
    // of files that may not be changed
    ignoresWrites,
    excusesWrites,
    appendsToAnyFile,
    changesFiles,
    // of descriptors
    readsFromPosition,
    opensByName,
    closesOnFailure,
    opensEmptyFiles,
    keepsDescriptor,
    keepsDescriptorOnFailure,
    // of damage
    fillsShortFiles,
    abortsOnShortFiles,
    exitsOnShortFiles,
    loopsOnDamage,
    throwsOnDamage,
    // of manners
    losesMemory,
    losesMemoryOnFailure,
    talks,
    reportsErrors,
};

/// Children of the process inherit it.
extern Fault fault;

/// Registers the format FAULTY, which holds images of bytes or 16-bit numbers, one behind the
/// other, with pages in any order. ZEL_DATABASE must name a database with its entry.
void registerFaultyFormat();

} // namespace zel::test

#endif
