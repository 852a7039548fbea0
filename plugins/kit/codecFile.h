#ifndef ZELKIT_CODECFILE_H
#define ZELKIT_CODECFILE_H

#include "kit/exif.h"
#include "kit/scanlineFile.h"

#include <memory>
#include <new>

namespace zelkit {

/// A scanline file whose codec is two classes, each made for one pass through the file:
/// - `Decoder(fd, name, quiet)` with `canStart()`, false once it has left the first row for good,
///   `start()`, which goes to the first row, `decodeRows(rows, count)` and `skipRows(count)`,
/// - `Encoder(fd, name)` with `encodeRows(rows, count)` and `finish()`.
/// A subclass opens them, and implements createFile.
template <typename Decoder, typename Encoder>
class CodecFile : public ScanlineFile {
protected:
    virtual void readOptions() = 0;
    /// Reads what stands before the first row.
    virtual zelStatus open(Decoder& decoder) = 0;
    /// Fills the attributes and metadata from a decoder that was just opened.
    virtual void describe(Decoder& decoder) = 0;
    /// Writes what stands before the first row.
    virtual zelStatus open(Encoder& encoder) = 0;

    bool carriesIccProfile() const override { return true; }

    /// `fields`, with the orientation as EXIF states it.
    Fields fieldsToWrite() const {
        Fields stated = fields;
        if (orientation != zelUpperLeftOrigin)
            stated.set(exifOrientation, static_cast<double>(orientation));
        return stated;
    }

    zelStatus openFile() override {
        readOptions();
        const zelStatus status = makeDecoder(false);
        if (status != zelOKAY)
            return status;
        describe(*decoder_);
        orientation = orientationOf(fields);
        return beginReading();
    }

    zelStatus startDecoding() override {
        zelStatus status = zelOKAY;
        if (!decoder_->canStart())
            status = makeDecoder(true);
        return status == zelOKAY ? decoder_->start() : status;
    }
    zelStatus decodeRows(std::uint8_t* rows, int count) override {
        return decoder_->decodeRows(rows, count);
    }
    zelStatus skipRows(int count) override { return decoder_->skipRows(count); }

    zelStatus startEncoding() override {
        encoder_.reset(new (std::nothrow) Encoder(fd, nameForMessages()));
        return encoder_ ? open(*encoder_) : noMemory();
    }
    zelStatus encodeRows(const std::uint8_t* rows, int count) override {
        return encoder_->encodeRows(rows, count);
    }
    zelStatus finishEncoding() override {
        const zelStatus status = encoder_->finish();
        encoder_.reset();
        return status;
    }

private:
    // What a file has to say against itself is reported once.
    zelStatus makeDecoder(bool again) {
        decoder_.reset(new (std::nothrow) Decoder(fd, nameForMessages(), again));
        return decoder_ ? open(*decoder_) : noMemory();
    }

    std::unique_ptr<Decoder> decoder_;
    std::unique_ptr<Encoder> encoder_;
};

} // namespace zelkit

#endif
