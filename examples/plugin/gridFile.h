#ifndef GRIDFILE_H
#define GRIDFILE_H

#include <zel/zel.h>

/// "GRID", width and height in two bytes each, the high one first, and then a byte for each pixel,
/// row by row from the top.
class GridFile : public zelFile {
public:
    ~GridFile() override;

    static zelClassList classList;
    char* getClassName(int parentIdx) const override { return classList.find(parentIdx); }
    const zelClassList* getClassId() const override { return &classList; }
    int derivesFrom(const zelClassList* other) const override { return classList.find(other); }

    zelStatus getPage(void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;
    zelStatus setPage(const void* data, int x, int y, int z, int c, int nx, int ny, int nz,
                      int nc) override;

protected:
    char* getDefaultDescription() const override;
    zelStatus openFile() override;
    zelStatus createFile() override;
    zelStatus closeFile() override;

private:
    bool ownsDescriptor = false;
};

#endif
