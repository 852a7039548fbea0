#ifndef ZEL_TOOL_FORMATLIST_H
#define ZEL_TOOL_FORMATLIST_H

#include "imageName.h"

#include <zel/zelDatabase.h>
#include <zel/zelFileConfig.h>
#include <zel/zelFormat.h>

#include <optional>
#include <string>
#include <vector>

namespace zel::tool {

/// All entries of the format database, by name.
std::vector<zelDatabase*> allFormats();

/// Their names, for a message.
std::string joinedFormatNames();
std::string unknownFormatText(const std::string& format);

/// What the library reported as errors, as takeReportedErrors gives it, and for a plug-in that does
/// not load the system loader's own reason.
std::string takeExplainedErrors();

/// The format of a new file: the one that the user asked for, else the one in the name, else what
/// the library chooses for the name. Throws a Failure if there is none or it cannot be written.
zelFormat& findOutputFormat(const ImageName& name, const std::optional<std::string>& wanted);

/// Why a format does not take such a file, and what it would take.
std::string refusalText(zelFormat& format, const zelFileConfig& config);

} // namespace zel::tool

#endif
