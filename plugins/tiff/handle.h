#ifndef ZELTIFF_HANDLE_H
#define ZELTIFF_HANDLE_H

#include <zel/zelError.h>

#include <cstdint>
#include <string>

#include <tiffio.h>

namespace zeltiff {

/// A file open in libtiff, over a descriptor that stays the caller's. All I/O is done at offsets;
/// the descriptor's position never moves. What libtiff has to say is reported as a warning (private
/// tags as information), and what the system said is kept until `check` turns it into a status.
class Handle {
public:
    Handle() = default;
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { drop(); }

    /// Opens the descriptor in one of libtiff's modes and reads the first directory, if there is
    /// one. `largestBlock` bounds each allocation of libtiff, 0 for no bound.
    /// Fails as `check` does, with zelCORRUPTED for what is no readable directory.
    zelStatus open(int fd, const char* name, const char* mode, std::int64_t largestBlock);

    /// Writes what libtiff still holds, and ends. Fails as `check` does.
    zelStatus close();

    TIFF* get() const { return tiff_; }
    int fd() const { return fd_; }
    std::int64_t fileLength() const { return length_; }

    /// The status of libtiff calls since the last check: zelOKAY if `success`; otherwise the failed
    /// write or read (kind 1 and errno), zelPREMATUREEOF if a read met the file's end, else
    /// `otherwise`.
    zelStatus check(bool success, zelMainStatus otherwise);

    /// How many errors and warnings libtiff has given since the opening.
    int complaints() const { return complaints_; }

    /// Whether libtiff was refused memory, by the bound, since the opening.
    bool lackedMemory() const { return lackedMemory_; }

    /// While set, zeros behind the file's end make the file longer without being written.
    void setSparse(bool sparse) { sparse_ = sparse; }

private:
    static tmsize_t readBytes(thandle_t self, void* data, tmsize_t bytes);
    static tmsize_t writeBytes(thandle_t self, void* data, tmsize_t bytes);
    static toff_t seek(thandle_t self, toff_t offset, int whence);
    static int ignoreClose(thandle_t self);
    static toff_t size(thandle_t self);
    static int report(TIFF* tiff, void* self, const char* module, const char* format,
                      va_list arguments) __attribute__((format(printf, 4, 0)));
    void drop();

    TIFF* tiff_ = nullptr;
    std::string name_;
    int fd_ = -1;
    std::int64_t position_ = 0;
    std::int64_t length_ = 0;
    zelStatus readStatus_ = zelOKAY;
    zelStatus writeStatus_ = zelOKAY;
    int complaints_ = 0;
    bool lackedMemory_ = false;
    bool sparse_ = false;
};

} // namespace zeltiff

#endif
