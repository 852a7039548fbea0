#ifndef ZELKIT_SCANLINEFILE_H
#define ZELKIT_SCANLINEFILE_H

#include "kit/buffer.h"
#include "kit/fields.h"
#include "kit/pluginFile.h"

#include <zel/zelColormap.h>
#include <zel/zelTag.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace zelkit {

/// A file whose codec goes through the rows of an image once, from the first to the last. Pages are
/// bands of full rows, interleaved, and one is held in memory; those of a new file may be tiles, if
/// the subclass encodes such.
///
/// Reading: pages in any order. Going forward skips rows, going back starts the codec again.
///
/// Writing: pages once, in rising order. The current page may be written in parts and again, until
/// a later one is written or the file is flushed; then its rows are encoded. What is passed over,
/// and what is missing when the file is closed, is 0. Before its first row is encoded, tags, colour
/// map and ICC profile may be set. Anything else:
/// - setPage of a page that is encoded: a warning and zelUNSUPPORTEDBYFORMAT,
/// - getPage of such a page: zelUNSUPPORTEDBYFILE, of a page that is not yet written: zeros,
/// - any change to a file that was not made by this object: zelREADONLY, or a warning and
///   zelUNSUPPORTEDBYFORMAT if it was opened to be changed,
/// - tags, colour map or profile after the first row: a warning and zelUNSUPPORTEDBYFORMAT.
///
/// A subclass implements openFile, which fills the attributes but order and page size and ends with
/// `return beginReading();`, decodes rows, and if it can write implements createFile, which ends
/// with `return beginWriting();`, and encodes rows. A row of a subclass is `rowBytes()` bytes: the
/// elements of a row of pixels, 16-bit ones and wider in the machine's byte order, bits padded to
/// a whole byte.
class ScanlineFile : public PluginFile {
public:
    zelStatus flush() override;
    zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;
    zelStatus setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;

    /// `palette`, and zelUNSUPPORTEDBYFILE if there is none.
    zelStatus getColormap(const zelColormap*& colormap) override;
    /// Sets `palette` to a copy with 3 or 4 channels of bytes and at most 256 entries.
    /// zelUNSUPPORTEDBYFILE if the file is no zelRGBPalette.
    zelStatus setColormap(const zelColormap* colormap) override;
    /// From and to `fields`, by the format's table of tags.
    zelStatus getItem(int tag, va_list args) override;
    zelStatus setItem(int tag, va_list args) override;

protected:
    ScanlineFile() = default;

    /// Sets the order, and the page size to bands of about 256 KiB, and forgets what was decoded.
    /// To be called whenever the subclass shows another image. zelBADPARAMS if a size is below 1 or
    /// too large, zelMALLOCFAILED if there is no memory for a band.
    zelStatus beginReading();
    /// Starts an image that is to be written, with the page size that it has.
    /// zelUNSUPPORTEDBYFORMAT if its pages fit no image of this size, zelMALLOCFAILED as above.
    zelStatus beginWriting();
    /// For appendImg: ends the image in writing and takes the attributes of another, by the
    /// format's defaults from `source`, or else from the image in writing. beginWriting starts it.
    /// zelUNSUPPORTEDBYFORMAT, with a warning, if it is not of the same size and orientation.
    zelStatus prepareNextImage(zelFile* source, const zelFileConfig* config);
    /// Encodes what is missing of the image in writing and ends it. Without one, what ending the
    /// last one came to.
    zelStatus finishWriting();
    /// finishWriting, and the descriptor closed. The first failure is answered.
    zelStatus closeFile() override;

    /// zelOKAY if this object makes the file; else zelREADONLY, or a warning and
    /// zelUNSUPPORTEDBYFORMAT.
    zelStatus checkWritable() const;
    /// The same, and refuses once the first row of the image is encoded.
    zelStatus checkHeaderOpen() const;

    std::size_t rowBytes() const;
    /// Whether this is a page of the image, as the library asks for it.
    bool isPage(int x, int y, int z, int c, int nx, int ny, int nz, int nc) const;

    /// Goes to the image's first row, from wherever the codec stands.
    virtual zelStatus startDecoding() = 0;
    /// Decodes the next `count` rows into `rows`, one behind the other.
    virtual zelStatus decodeRows(std::uint8_t* rows, int count) = 0;
    /// Whether rows are had again, from anywhere, for little more than a copy of them. Then a page
    /// is decoded where it is wanted, and one is only held that is asked for again and again. The
    /// base says no.
    virtual bool rowsAreAtHand() const { return false; }
    /// Passes over the next `count` rows. The base decodes them.
    virtual zelStatus skipRows(int count);

    /// Writes what stands before the first row. The base answers zelUNSUPPORTEDBYFORMAT.
    virtual zelStatus startEncoding();
    virtual zelStatus encodeRows(const std::uint8_t* rows, int count);
    /// Encodes the next page; rows lie as far apart as in a full one. The base encodes rows, and
    /// answers zelUNSUPPORTEDBYFORMAT for a page that is narrower than the image: a format that
    /// says to support such pages overrides it.
    virtual zelStatus encodePage(const std::uint8_t* elements, int x, int y, int nx, int ny);
    /// Writes what stands behind the last row. The base has nothing to write.
    virtual zelStatus finishEncoding();

    /// Whether the format holds ICC profiles. The base says no.
    virtual bool carriesIccProfile() const;

    zelStatus _getICCProfile(int& bytes, void*& profile) override;
    zelStatus _freeICCProfile(void* profile) override;
    /// A profile of 0 bytes takes the profile away.
    zelStatus _setICCProfile(int bytes, const void* profile) override;

    Fields fields;
    std::vector<std::uint8_t> iccProfile;
    std::unique_ptr<zelColormap> palette;

private:
    enum class Use {
        Reading,
        Writing,
        Finished
    };

    zelStatus makeBand();
    std::size_t bytesOf(int pixels) const;
    std::int64_t pageAt(int x, int y) const;
    zelStatus decodeBand(int band, std::uint8_t* rows);
    zelStatus readBand(int band);
    zelStatus emitPage();
    zelStatus advanceTo(std::int64_t page);
    void bandToPage(void* data, int rows) const;
    void pageToBand(const void* data, int rows);

    Use use_ = Use::Reading;
    Buffer band_;            ///< or any other page
    std::int64_t held_ = -1; ///< the page in `band_`, by number; -1: none
    std::int64_t next_ = -1; ///< the page before which the codec stands; -1: before its start
    int wanted_ = -1;        ///< the band that was asked for last; -1: none
    zelStatus writeStatus_ = zelOKAY;
};

} // namespace zelkit

#endif
