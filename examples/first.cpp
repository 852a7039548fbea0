#include <cstdio>
#include <vector>
#include <zel/zel.h>

int main(int, char** argv) {
    zelStatus status = zelOKAY;
    if (zelFile* file = zelFile::open(argv[1], 0, &status)) {
        zelConfig as(zelUChar, zelInterleaved, file->getCsize(), nullptr, 0, zelUpperLeftOrigin);
        std::vector<unsigned char> pixel(as.nchans);
        status = file->getTile(0, 0, 0, 1, 1, 1, pixel.data(), &as);
        for (int value : pixel)
            std::printf("%d ", value);
        file->close(0);
    }
    std::puts(zelMainStatusToString(zelStatusMain(status)));
    return status != zelOKAY;
}
