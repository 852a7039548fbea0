#ifndef ZELJPEG_CODEC_H
#define ZELJPEG_CODEC_H

#include "kit/jumpGuard.h"

#include <zel/zelError.h>

#include <cstddef>
#include <cstdio> // jpeglib.h needs it before itself

#include <jpeglib.h>
#include <string>

namespace zeljpeg {

/// What reading and writing by libjpeg-turbo share: its errors as statuses, its warnings as
/// reports. An object stays where it is made, for the library points to it.
class Codec {
public:
    Codec(const Codec&) = delete;
    Codec& operator=(const Codec&) = delete;

    /// The file, and its name in reports. A quiet codec reports nothing.
    Codec(int fd, const char* name, bool quiet = false);

protected:
    ~Codec() = default;

    /// Runs calls of the library. Fails with the status given to `fail`, with
    /// zelUNSUPPORTEDBYFORMAT for a kind of JPEG that the library lacks, and otherwise with
    /// zelCORRUPTED, also where the library has gone on with samples that it made up.
    template <typename Body>
    zelStatus run(Body body) {
        const bool whole = guard_.run(body);
        return whole && !damaged_ ? zelOKAY : failure();
    }

    /// Ends the running call of the library.
    [[noreturn]] void fail(zelStatus status, const char* message);

    jpeg_error_mgr* errorManager() { return &errors_; }
    int fd() const { return fd_; }
    const char* name() const { return name_.c_str(); }

private:
    static void onError(j_common_ptr info);
    static void onMessage(j_common_ptr info, int level);
    static void ignoreOutput(j_common_ptr info);
    zelStatus failure();
    void report(const char* message);
    void reportMessage(j_common_ptr info);

    zelkit::JumpGuard guard_;
    jpeg_error_mgr errors_{};
    zelStatus status_ = zelOKAY;
    bool damaged_ = false;
    int fd_;
    std::string name_;
    int reportsLeft_;
};

} // namespace zeljpeg

#endif
