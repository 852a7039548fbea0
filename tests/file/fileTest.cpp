#include <zel/zelFile.h>

#include <gtest/gtest.h>

#include <zel/zelFileConfig.h>

#include "support/childProcess.h"
#include "support/memoryFile.h"

namespace {

using namespace zel::test;

constexpr zelStatus unsupported = zelStatusEncode(zelUNSUPPORTEDBYFORMAT);

/// A file class that overrides nothing it need not.
class BareFile : public zelFile {
public:
    int images = 1;
    int getNumImgs() override { return images; }

    /// What every operation answers that is left to the base class.
    std::vector<zelStatus> defaults() {
        double min = 0;
        double max = 0;
        int bytes = 0;
        void* profile = nullptr;
        unsigned align = 0;
        const zelColormap* map = nullptr;
        char byte = 0;
        return {getPage(&byte, 0, 0, 0, 0, 1, 1, 1, 1),
                setPage(&byte, 0, 0, 0, 0, 1, 1, 1, 1),
                getCompressedPage(1, 2),
                decompressPage(),
                compressPage(),
                setCompressedPage(),
                appendImg(nullptr, nullptr),
                getColormap(map),
                getStatMinMax(min, max),
                getScaleMinMax(min, max),
                setColormap(map),
                setStatMinMax(min, max),
                setScaleMinMax(min, max),
                getTag(1),
                getItem(1),
                setTag(1, 2),
                setItem(1, 2),
                createFile(),
                _getICCProfile(bytes, profile),
                _freeICCProfile(profile),
                _setICCProfile(bytes, profile),
                _enableDirectIO(1),
                _getDirectIOMemAlignment(align),
                getICCProfile(bytes, profile),
                setICCProfile(bytes, profile),
                enableDirectIO(0)};
    }

protected:
    zelStatus openFile() override { return zelOKAY; }
    zelStatus closeFile() override { return zelOKAY; }
};

TEST(FileClass, knowsWhatItDerivesFrom) {
    Log log;
    const Plan plan;
    MemoryFile file(log, plan);
    EXPECT_STREQ(file.getClassName(0), "MemoryFile");
    EXPECT_STREQ(file.getClassName(-3), "MemoryFile");
    EXPECT_STREQ(file.getClassName(1), "zelFile");
    EXPECT_EQ(file.getClassName(2), nullptr);
    EXPECT_EQ(file.derivesFrom(&MemoryFile::classList), 1);
    EXPECT_EQ(file.derivesFrom(&zelFile::classList), 2);
    EXPECT_EQ(zelFile::classList.find(&zelFile::classList), 1);
    EXPECT_EQ(zelFile::classList.find(&MemoryFile::classList), 0);
    const zelClassList sameName("zelFile", nullptr);
    EXPECT_EQ(file.derivesFrom(&sameName), 0);

    EXPECT_EQ(file.haveAttributesChanged(), 0);
    file.markChanged();
    EXPECT_NE(file.haveAttributesChanged(), 0);
    EXPECT_EQ(file.haveAttributesChanged(), 0);
}

TEST(FileClass, answersWhatTheFormatDoesNotOffer) {
    class Closable : public BareFile {
    public:
        ~Closable() override = default;
    } file;
    for (const zelStatus status : file.defaults())
        EXPECT_EQ(status, unsupported);
    EXPECT_EQ(file.flush(), zelOKAY);
    EXPECT_EQ(file.getCurrentImg(), 0);
    EXPECT_EQ(file.setCurrentImg(0), zelOKAY);
    EXPECT_EQ(file.setCurrentImg(1), zelFILEINDEXOOB);
    file.images = 3;
    EXPECT_EQ(file.setCurrentImg(2), zelUNSUPPORTEDBYLIBRARY);
    EXPECT_EQ(file.setCurrentImg(3), zelFILEINDEXOOB);
    EXPECT_EQ(file.setCurrentImg(-1), zelFILEINDEXOOB);
}

TEST(FileAttributes, turnWithTheOrientation) {
    Log log;
    const Plan plan;
    MemoryFile file(log, plan);
    file.describe(zelSize(40, 30, 2, 3), zelSize(8, 4, 1, 1), zelShort, zelSeparate,
                  zelLeftUpperOrigin);
    zelSize s;
    file.getDimensions(s);
    EXPECT_EQ(s, zelSize(30, 40, 2, 3));
    file.getSize(s, zelRightLowerOrigin);
    EXPECT_EQ(s, zelSize(40, 30, 2, 3));
    file.getPageDimensions(s);
    EXPECT_EQ(s, zelSize(4, 8, 1, 1));
    file.getPageSize(s, zelUpperRightOrigin);
    EXPECT_EQ(s, zelSize(4, 8, 1, 1));

    const zelFileConfig config(&file);
    EXPECT_EQ(config.getDimensions(), zelSize(30, 40, 2, 3));
    config.getSize(s);
    EXPECT_EQ(s, zelSize(40, 30, 2, 3));
    config.getPageSize(s);
    EXPECT_EQ(s, zelSize(8, 4, 1, 1));
    EXPECT_EQ(config.getDataType(), zelShort);
    EXPECT_EQ(config.getOrder(), zelSeparate);
    EXPECT_EQ(config.getOrientation(), zelLeftUpperOrigin);
}

TEST(FileGuards, openOnlyForPlugInsOfTheirVersion) {
    const ChildResult result = runWithDatabase(
        "format OLD description \"o\" dll none.so subsystem base suffixes .old\n"
        "format NEW description \"n\" dll none.so subsystem base suffixes .new\n",
        [] {
            MemoryFormat old("OLD");
            MemoryFormat recent("NEW", 2, 1);
            const zelSize size(4, 4, 1, 3);
            const zelFileConfig config(&size);
            std::string text;
            for (const char* name : {"a.old", "a.new"})
                if (zelFile* file = zelFile::create(name, nullptr, &config, nullptr))
                    text += std::to_string(file->setICCProfile(12, "")) + " ";
            return text + recent.log.back();
        });
    EXPECT_EQ(result.text, "5 0 _setICCProfile 12");
}

} // namespace
