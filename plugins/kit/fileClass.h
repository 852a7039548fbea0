#ifndef ZELKIT_FILECLASS_H
#define ZELKIT_FILECLASS_H

#include <zel/zelClassList.h>
#include <zel/zelFile.h>

namespace zelkit {

/// `Base` with the class identity of `File`, which derives from this and names itself:
///
///     class BmpFile final : public FileClass<BmpFile, ScanlineFile> {
///     public:
///         static constexpr char className[] = "zelbmp::BmpFile";
///         static constexpr char description[] = "Bitmap file";
///
/// The parent of its link is that of zelFile.
template <typename File, typename Base>
class FileClass : public Base {
public:
    static zelClassList classList;

    char* getClassName(int parentIdx) const override { return classList.find(parentIdx); }
    const zelClassList* getClassId() const override { return &classList; }
    int derivesFrom(const zelClassList* other) const override { return classList.find(other); }

protected:
    // The interface is older than const texts.
    char* getDefaultDescription() const override { return const_cast<char*>(File::description); }
};

template <typename File, typename Base>
zelClassList FileClass<File, Base>::classList(File::className, &zelFile::classList);

} // namespace zelkit

#endif
