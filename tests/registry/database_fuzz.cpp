// Feeds the reading of the database from a fuzzer. The library reads one database in a process;
// this program takes its sources in, so as to put their state back to the beginning for each input.

#include "registry/zelFormatDB.cpp"  // NOLINT(bugprone-suspicious-include)
#include "registry/zelFormatLex.cpp" // NOLINT(bugprone-suspicious-include)

#include <cstdarg>
#include <sys/mman.h>
#include <unistd.h>

namespace {

void ignoreReport(void*, int, const char*, va_list) {}

void openInput(const std::uint8_t* data, std::size_t size) {
    static const int file = memfd_create("database", 0);
    if (ftruncate(file, 0) != 0 || pwrite(file, data, size, 0) != static_cast<ssize_t>(size)) {
        std::abort();
    }
    setenv("ZEL_DATABASE", ("/proc/self/fd/" + std::to_string(file)).c_str(), 1);
}

void tryRules(const std::uint8_t* data, std::size_t size) {
    std::vector<char> bytes(data, data + std::min<std::size_t>(size, 16));
    for (const zelFormatDB* entry : listEntries()) {
        if (entry->hasMatchRule()) {
            entry->eval(bytes.data(), static_cast<int>(bytes.size()));
        }
    }
}

void startOver(std::size_t size) {
    // Scans what a syntax error left, which takes a byte at least each time.
    for (std::size_t i = 0; i <= size; ++i) {
        zellex();
    }
    while (reader.incLevel > 0) {
        std::fclose(reader.dbFile[reader.incLevel--]);
    }
    reader = {};
    atLineStart = true;
    delete fmtDict;
    fmtDict = nullptr;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zelSetErrorHandler(ignoreReport, nullptr);
    openInput(data, size);
    zelFormatDB::getDictionary();
    tryRules(data, size);
    startOver(size);
    return 0;
}
