// Prints the format and the pixels of an image of one channel, the topmost row first.

#include <cstdio>
#include <vector>
#include <zel/zel.h>

int main(int argc, char** argv) {
    zelStatus status = zelOKAY;
    zelFile* file = argc == 2 ? zelFile::open(argv[1], 0, &status) : nullptr;
    if (!file)
        return 1;
    zelSize size;
    file->getSize(size, zelUpperLeftOrigin);
    const zelConfig upright(zelInt, zelInterleaved, 1, nullptr, 0, zelUpperLeftOrigin);
    std::vector<int> pixels(static_cast<std::size_t>(size.x) * static_cast<std::size_t>(size.y));
    status = file->getTile(0, 0, 0, size.x, size.y, 1, pixels.data(), &upright);
    std::printf("%s", file->getFormat()->getName());
    for (const int pixel : pixels)
        std::printf(" %d", pixel);
    std::printf("\n");
    return file->close(0) == zelOKAY && status == zelOKAY ? 0 : 1;
}
