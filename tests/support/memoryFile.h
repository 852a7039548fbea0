#ifndef ZEL_TESTS_SUPPORT_MEMORY_FILE_H
#define ZEL_TESTS_SUPPORT_MEMORY_FILE_H

#include <zel/zelFile.h>
#include <zel/zelFormat.h>

#include <set>
#include <string>
#include <vector>

#include "support/naiveConvert.h"

namespace zel::test {

/// What was called, in order, as short texts.
using Log = std::vector<std::string>;

template <class... Values>
void record(Log& log, std::string text, Values... values) {
    ((text += " " + std::to_string(values)), ...);
    log.push_back(std::move(text));
}

/// Everything that was recorded, one call a line, to be handed out of a child process.
inline std::string joined(const Log& log) {
    std::string text;
    for (const std::string& line : log)
        text += line + "\n";
    return text;
}

/// How the calls of a MemoryFile end.
struct Plan {
    std::vector<zelStatus> openFile; ///< by call; zelOKAY beyond the end
    zelStatus createFile = zelOKAY;
    zelStatus flush = zelOKAY;
    zelStatus closeFile = zelOKAY;
    bool noObject = false;    ///< the factory gives nothing
    int failingPageCall = -1; ///< the page call, counted from 0, that answers `pageFailure`
    zelStatus pageFailure = zelStatusEncode(zelREADFAILED);
    bool hasRanges = false; ///< scale and statistics values can be had and set
};

/// An image in memory behind the calls that a plug-in answers. Every call is recorded.
class MemoryFile : public zelFile {
public:
    static inline zelClassList classList{"MemoryFile", &zelFile::classList};

    MemoryFile(Log& theLog, const Plan& thePlan) : log(theLog), plan(thePlan) {}
    ~MemoryFile() override { record(log, "destroy"); }

    char* getClassName(int parentIdx) const override { return classList.find(parentIdx); }
    const zelClassList* getClassId() const override { return &classList; }
    int derivesFrom(const zelClassList* id) const override { return classList.find(id); }

    void describe(const zelSize& imageSize, const zelSize& sizeOfPage, zelDataType type = zelUChar,
                  zelOrder channelOrder = zelInterleaved,
                  zelOrientation stored = zelLowerLeftOrigin, zelColorModel model = zelRGB) {
        size = imageSize;
        pageSize = sizeOfPage;
        dtype = type;
        order = channelOrder;
        orientation = stored;
        cm = model;
        compression = zelNoCompression;
    }
    void markChanged() { markAttributesChanged(); }
    void setFormatArgs(char* mallocedText) { formatArgs = mallocedText; }
    using zelFile::lookupName;
    using zelFile::parseArguments;

    /// The whole image, in the file's frame. Its memory is made at the first use.
    naive::Area image() {
        naive::Area area;
        area.type = dtype;
        area.order = zelInterleaved;
        area.box = {0, 0, 0, size.x, size.y, size.z};
        area.channels = size.c;
        const std::size_t bytes = zelDataSize(dtype, size);
        if (pixels.size() != bytes)
            pixels.assign(bytes, 0);
        area.data = pixels.data();
        return area;
    }

    zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override {
        record(log, "get", x, y, z, c, nx, ny, nz, nc);
        if (pageCalls++ == plan.failingPageCall)
            return plan.pageFailure;
        naive::convert(page(data, {x, y, z, nx, ny, nz}, c, nc), image());
        return zelOKAY;
    }
    zelStatus setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override {
        record(log, "set", x, y, z, c, nx, ny, nz, nc);
        if (pageCalls++ == plan.failingPageCall)
            return plan.pageFailure;
        naive::convert(image(), page(const_cast<void*>(data), {x, y, z, nx, ny, nz}, c, nc));
        return zelOKAY;
    }

    zelStatus flush() override {
        record(log, "flush");
        return plan.flush;
    }
    zelStatus getScaleMinMax(double& min, double& max) override { return range(1, min, max); }
    zelStatus getStatMinMax(double& min, double& max) override { return range(2, min, max); }
    zelStatus setScaleMinMax(double min, double max) override {
        record(log, "setScaleMinMax", min, max);
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    }
    zelStatus setStatMinMax(double min, double max) override {
        record(log, "setStatMinMax", min, max);
        return zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    }

protected:
    zelStatus openFile() override {
        record(log, fd < 0 ? "openFile by name" : "openFile");
        describe(zelSize(4, 3, 1, 3), zelSize(4, 3, 1, 3));
        return openCalls < plan.openFile.size() ? plan.openFile[openCalls++] : zelOKAY;
    }
    zelStatus createFile() override {
        record(log, "createFile", size.x, size.y, size.z, size.c, pageSize.x, pageSize.y,
               pageSize.z, pageSize.c, int{dtype}, int{order}, int{cm}, int{orientation},
               int{compression});
        return plan.createFile;
    }
    zelStatus closeFile() override {
        record(log, "closeFile");
        return plan.closeFile;
    }
    zelStatus _setICCProfile(int bytes, const void*) override {
        record(log, "_setICCProfile", bytes);
        return zelOKAY;
    }

private:
    /// The buffer of a page, of which only the box and `nc` channels take part.
    naive::Area page(void* data, const naive::Box& box, int c, int nc) const {
        naive::Area area;
        area.data = static_cast<unsigned char*>(data);
        area.type = dtype;
        area.order = order;
        area.box = {box.x, box.y, box.z, pageSize.x, pageSize.y, pageSize.z};
        area.channels = pageSize.c;
        for (int slot = 0; slot < pageSize.c; ++slot)
            area.list.push_back(slot < nc ? c + slot : -1);
        area.clipped = true;
        area.clip = box;
        return area;
    }
    zelStatus range(double low, double& min, double& max) const {
        min = low;
        max = low + 10;
        return plan.hasRanges ? zelOKAY : zelStatusEncode(zelUNSUPPORTEDBYFORMAT);
    }

    Log& log;
    const Plan& plan;
    std::vector<unsigned char> pixels;
    std::size_t openCalls = 0;
    int pageCalls = 0;
};

/// A format of MemoryFiles. It supports the values in its sets, and pages of up to 64 by 64; every
/// query is recorded. Constructing one registers it, so the database must name it.
class MemoryFormat : public zelFormat {
public:
    explicit MemoryFormat(const char* id) : zelFormat(id) {}
    MemoryFormat(const char* id, int major, int minor) : zelFormat(id, major, minor) {}

    Log log;
    Plan plan;
    std::set<int> types{zelUChar, zelFloat};
    std::set<int> orders{zelInterleaved, zelSeparate};
    std::set<int> orientations{zelUpperLeftOrigin, zelLeftUpperOrigin};
    std::set<int> models{zelRGB, zelMultiSpectral};
    std::set<int> compressions{zelNoCompression, zelZIP};

    int typeIsSupported(zelDataType v) override { return ask("type", types, v); }
    int orderIsSupported(zelOrder v) override { return ask("order", orders, v); }
    int orientationIsSupported(zelOrientation v) override {
        return ask("orientation", orientations, v);
    }
    int colorModelIsSupported(zelColorModel v) override { return ask("model", models, v); }
    int compressionIsSupported(zelCompression v) override {
        return ask("compression", compressions, v);
    }
    int sizeIsSupported(int x, int y, int z, int c, zelOrientation o) override {
        record(log, "size", x, y, z, c, int{o});
        return x > 0 && y > 0;
    }
    int pagingIsSupported() override { return 1; }
    int pageSizeIsSupported(int x, int y, int z, int c, int px, int py, int pz, int pc,
                            zelOrientation o) override {
        record(log, "pageSize", x, y, z, c, px, py, pz, pc, int{o});
        return px <= 64 && py <= 64;
    }
    int randomAccessReadIsSupported() override { return 1; }
    int randomAccessWriteIsSupported() override { return 1; }
    zelDataType getPreferredType() override { return prefer("preferredType", zelUChar); }
    zelOrder getPreferredOrder() override { return prefer("preferredOrder", zelInterleaved); }
    zelOrientation getPreferredOrientation() override {
        return prefer("preferredOrientation", zelUpperLeftOrigin);
    }
    zelColorModel getPreferredColorModel(int nchans) override {
        record(log, "preferredModel", nchans);
        return nchans == 0 || nchans == 3 ? zelRGB : zelMultiSpectral;
    }
    zelCompression getPreferredCompression() override {
        return prefer("preferredCompression", zelZIP);
    }
    void getPreferredPageSize(int x, int y, int z, int c, int& px, int& py, int& pz, int& pc,
                              zelOrientation o) override {
        record(log, "preferredPageSize", x, y, z, c, px, py, pz, pc, int{o});
        px = 64;
        py = 32;
        pz = 1;
        pc = c;
    }

protected:
    zelFile* newfileobj() override {
        record(log, "newfileobj");
        if (plan.noObject)
            errno = ENOMEM;
        return plan.noObject ? nullptr : new MemoryFile(log, plan);
    }

private:
    int ask(const char* what, const std::set<int>& supported, int value) {
        record(log, what, value);
        return supported.count(value) != 0;
    }
    template <class Value>
    Value prefer(const char* what, Value value) {
        record(log, what);
        return value;
    }
};

} // namespace zel::test

#endif
