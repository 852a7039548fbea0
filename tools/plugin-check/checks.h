#ifndef ZEL_PLUGINCHECK_CHECKS_H
#define ZEL_PLUGINCHECK_CHECKS_H

#include "outcome.h"
#include "subject.h"

#include <span>
#include <vector>

namespace zel::check {

// Each check counts its cases in the tally; without cases it did not apply. It runs in a child
// process and in an empty directory.

/// The plug-in loads, its format and its classes of files say who they are.
void checkRegistration(const Subject& subject, Tally& tally);
/// Preferences are supported, pages that are preferred fit, and what is supported can be created.
/// `kinds` gets what `create` accepts.
void checkCapabilities(const Subject& subject, Tally& tally, std::vector<Kind>& kinds);

void checkRoundTrips(const Subject& subject, Tally& tally);
void checkPagesInRandomOrder(const Subject& subject, Tally& tally);
void checkPartsOfPages(const Subject& subject, Tally& tally);
void checkSeveralImages(const Subject& subject, Tally& tally);
void checkReadOnlyFiles(const Subject& subject, Tally& tally);

void checkGivenFiles(const Subject& subject, Tally& tally);
void checkFailedOpens(const Subject& subject, Tally& tally);
void checkTruncation(const Subject& subject, Tally& tally);
void checkDamage(const Subject& subject, Tally& tally);

/// Files through descriptors that the client opened.
void checkClientDescriptors(const Subject& subject, Tally& tally);
void checkDescriptors(const Subject& subject, Tally& tally);
void checkMemory(const Subject& subject, Tally& tally);

} // namespace zel::check

#endif
