#ifndef ZELKIT_PLUGINFILE_H
#define ZELKIT_PLUGINFILE_H

#include "kit/arguments.h"
#include "kit/fileIo.h"

#include <zel/zelFile.h>

#include <span>

namespace zelkit {

/// What the file classes of plug-ins share: format arguments and the descriptor's life. It is no
/// link of its own in the chain of class identities; a plug-in's list has that of zelFile as
/// parent.
class PluginFile : public zelFile {
public:
    /// Shows another image by `showImage`, and marks the attributes as changed.
    zelStatus setCurrentImg(int i) override;

protected:
    PluginFile() = default;
    /// Closes the descriptor that `makeFile` opened, if `closeDescriptor` did not.
    ~PluginFile() override;

    /// Shows an image that exists, by its index. The base answers zelUNSUPPORTEDBYLIBRARY.
    virtual zelStatus showImage(int i);

    /// Reads the format arguments of the file's name into the variables of the table, by whole or
    /// shortened names. Anything else draws a warning and is ignored. To be called once in an
    /// object's life, even with an empty table, so that a needless argument draws its warning.
    void readArguments(std::span<const Argument> known);

    /// For createFile: leaves `fd` open on an empty file, which is the client's descriptor if there
    /// is one and otherwise the file called `filename`, made or emptied.
    /// Fails with zelOPENFAILED or zelWRITEFAILED and errno, and zelBADPARAMS without any name.
    zelStatus makeFile();

    /// For createFile: warns that the format has no form for the attributes, and answers
    /// zelUNSUPPORTEDBYFORMAT.
    zelStatus refuseAttributes() const;

    /// For closeFile: closes `fd`, whoever opened it. Fails with zelCLOSEFAILED and errno.
    zelStatus closeDescriptor();

    /// The file's name for messages: never null, and no more of a long path than its end, so that
    /// the message stays readable.
    const char* nameForMessages() const;

private:
    Descriptor made_;
};

} // namespace zelkit

#endif
