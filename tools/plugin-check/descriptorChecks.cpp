// Whether files come and go through descriptors that the client opened.

#include "checks.h"

#include <fcntl.h>
#include <unistd.h>

namespace zel::check {

namespace {

bool isOpen(int fd) {
    return fcntl(fd, F_GETFD) != -1;
}

int openDescriptor(const std::string& name, int flags) {
    const int fd = open(name.c_str(), flags | O_CLOEXEC, 0666);
    require(fd >= 0, "the file cannot be opened");
    return fd;
}

// A plug-in that works from a name alone may say so.
bool isRefused(const OpenFile& file, zelStatus status, int fd) {
    if (file)
        return false;
    require(isOpen(fd), "the descriptor is closed after a failure");
    close(fd);
    require(zelStatusMain(status) == zelUNSUPPORTEDBYLIBRARY, statusText(status));
    return true;
}

// The position is where the client or the search for the format has left it.
void readThroughDescriptor(const Subject& subject, const Kind& kind) {
    const Picture written = subject.make(kind, kind.sizeOf(13, 9), 2);
    const int fd = openDescriptor(Subject::nameOf(kind), O_RDONLY);
    lseek(fd, 0, SEEK_END);
    zelStatus status = zelOKAY;
    OpenFile file(zelFile::open(fd, nullptr, 0, subject.format, &status));
    if (isRefused(file, status, fd))
        return;
    requireImage(file.get(), written, subject.tolerance(kind), "by a descriptor at the end");
    finish(std::move(file));
    require(!isOpen(fd), "the descriptor is open after the file was closed");
}

void writeThroughDescriptor(const Subject& subject, const Kind& kind) {
    const zelSize size = kind.sizeOf(13, 9);
    const std::string name = Subject::nameOf(kind);
    const Picture written = subject.picture(kind, size, 3);
    const int fd = openDescriptor(name, O_RDWR | O_CREAT | O_TRUNC);
    zelStatus status = zelOKAY;
    OpenFile file = subject.tryCreate(kind, size, nullptr, status, fd);
    if (isRefused(file, status, fd))
        return;
    requireOkay(written.write(file.get(), wholeBox(size)), "writing");
    finish(std::move(file));
    require(!isOpen(fd), "the descriptor is open after the file was closed");
    file = subject.open(name);
    requireImage(file.get(), written, subject.tolerance(kind), "written to a descriptor");
    finish(std::move(file));
}

} // namespace

void checkClientDescriptors(const Subject& subject, Tally& tally) {
    for (const Kind& kind : subject.fewKinds()) {
        tally.run(kind.text() + ", read", [&] { readThroughDescriptor(subject, kind); });
        tally.run(kind.text() + ", written", [&] { writeThroughDescriptor(subject, kind); });
    }
}

} // namespace zel::check
