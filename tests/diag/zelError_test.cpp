#include <zel/zelError.h>
#include <zel/zelVersion.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/socket.h>
#include <sys/types.h>
#include <unistd.h>
#include <utility>
#include <vector>

using testing::Eq;
using testing::ExitedWithCode;
using testing::KilledBySignal;

namespace {

typedef std::vector<std::string> Writes;

// What an action writes to the debug channel, write by write: the channel becomes a socket that
// keeps them apart.
template <class Action>
Writes writesOf(Action action) {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    const int terminal = dup(STDERR_FILENO);
    dup2(ends[1], STDERR_FILENO);
    action();
    dup2(terminal, STDERR_FILENO);
    close(terminal);
    close(ends[1]);

    Writes writes;
    char text[4096];
    for (ssize_t n = 0; (n = read(ends[0], text, sizeof text)) > 0;)
        writes.emplace_back(text, static_cast<std::size_t>(n));
    close(ends[0]);
    return writes;
}

struct Report {
    int flags = -1;
    std::string text;
};

void record(void* arg, int flags, const char* fmt, va_list args) {
    char text[64];
    std::vsnprintf(text, sizeof text, fmt, args);
    *static_cast<Report*>(arg) = {flags, text};
}

std::pair<zelErrorHandlerType, void*> currentHandler() {
    std::pair<zelErrorHandlerType, void*> pair;
    zelGetErrorHandler(&pair.first, &pair.second);
    return pair;
}

// Each test starts as a fresh process does.
class Handlers : public testing::Test {
protected:
    void SetUp() override {
        for (const char* variable : {"ZEL_SILENT", "ZEL_ROBUST", "ZEL_DEBUG", "KAV_DEBUG"})
            unsetenv(variable);
        zelSetErrorHandler(nullptr, nullptr);
    }
    void TearDown() override { SetUp(); }
};

} // namespace

TEST(Status, PacksItsFields) {
    const zelStatus missing = zelStatusEncode(zelOPENFAILED, 1, ENOENT);
    EXPECT_EQ(static_cast<unsigned>(missing), (unsigned{ENOENT} << 16) | 0x1000u | 13u);
    EXPECT_TRUE(missing != zelOPENFAILED);
    EXPECT_TRUE(zelStatusEncode(zelOPENFAILED) == zelOPENFAILED);
    EXPECT_EQ(static_cast<int>(zelStatusEncode(zelUNSUPPORTEDBYLIBRARY)), 4);

    const zelStatus full = zelStatusEncode(static_cast<zelMainStatus>(0x1FFF), 0x1F, 0x1FFFF);
    EXPECT_EQ(static_cast<int>(full), -1);
    EXPECT_EQ(zelStatusMain(full), 0xFFF);
    EXPECT_EQ(zelStatusKind(full), 15);
    EXPECT_EQ(zelStatusErrno(full), 0xFFFF);
}

TEST(Status, MainStatusHasItsWords) {
    const char* const unknown = "(unrecognized zelMainStatus value)";
    const std::pair<int, const char*> cases[] = {
        {0, "Successful operation"},
        {zelREADONLY, "Object is not writable"},
        {zelFILEINDEXOOB, "Image index out of range of file"},
        {zelUNSUPPORTEDBYFILE, "Attempted operation is unsupported by file"},
        {24, unknown},
        {-1, unknown},
    };
    for (const auto& [value, text] : cases)
        EXPECT_STREQ(zelMainStatusToString(static_cast<zelMainStatus>(value)), text) << value;
}

TEST(Status, TextIsTheSystemsForKindOneOnly) {
    char buf[80];
    const std::pair<zelStatus, const char*> cases[] = {
        {zelStatusEncode(zelOPENFAILED, 1, ENOENT), std::strerror(ENOENT)},
        {zelStatusEncode(zelOPENFAILED), "File open failed"},
        {zelStatusEncode(zelOPENFAILED, 2, ENOENT), "File open failed"},
        {zelOKAY, "Successful operation"},
    };
    for (const auto& [status, text] : cases)
        EXPECT_STREQ(zelStatusToString(status, buf, sizeof buf), text);
}

TEST(Status, TextStaysInItsBuffer) {
    const std::string before = "##########";
    const std::pair<int, std::string> cases[] = {
        {0, before},
        {1, std::string("\0#########", 10)},
        {5, std::string("File\0#####", 10)},
    };
    for (const auto& [size, after] : cases) {
        std::string buf = before;
        EXPECT_EQ(zelStatusToString(zelStatusEncode(zelOPENFAILED), buf.data(), size), buf.data());
        EXPECT_EQ(buf, after) << size;
    }
}

TEST_F(Handlers, AreChosenByTheEnvironmentOnce) {
    int ignored = 0;
    const auto chosen = [&] {
        zelSetErrorHandler(nullptr, &ignored);
        EXPECT_EQ(currentHandler().second, nullptr);
        return currentHandler().first;
    };
    EXPECT_EQ(chosen(), zelNaiveErrorHandler);
    setenv("ZEL_ROBUST", "", 1);
    EXPECT_EQ(currentHandler().first, zelNaiveErrorHandler);
    EXPECT_EQ(chosen(), zelRobustErrorHandler);
    setenv("ZEL_SILENT", "", 1);
    EXPECT_EQ(chosen(), zelSilentErrorHandler);
}

TEST_F(Handlers, OfTheClientGetAllFlagsAndTheirArgument) {
    Report report;
    zelSetErrorHandler(record, &report);
    EXPECT_EQ(currentHandler(), std::make_pair(&record, static_cast<void*>(&report)));
    zelError(0x12300, "%s %d", "twelve", 12);
    EXPECT_EQ(report.flags, 0x12300);
    EXPECT_EQ(report.text, "twelve 12");
}

TEST_F(Handlers, AreRestoredAtTheEndOfABlock) {
    Report outer, inner;
    const auto inBlock = [&] {
        const zelSetLocalErrorHandler local(record, &inner);
        zelError(zelSevWarning, "in");
    };
    inBlock();
    EXPECT_EQ(currentHandler().first, zelNaiveErrorHandler);
    zelSetErrorHandler(record, &outer);
    inBlock();
    zelError(zelSevWarning, "out");
    EXPECT_EQ(inner.text, "in");
    EXPECT_EQ(outer.text, "out");
}

TEST_F(Handlers, PrintSeverityAndLineAsTwoWrites) {
    const std::pair<int, Writes> cases[] = {
        {zelSevWarning, {"Warning: ", "bad 7\n"}},
        {4, {"(unrecognized severity): ", "bad 7\n"}},
        {0x1FF, {"(unrecognized severity): ", "bad 7\n"}},
    };
    for (const auto& [flags, writes] : cases) {
        const int reported = flags;
        EXPECT_EQ(writesOf([reported] { zelError(reported, "bad %d", 7); }), writes) << flags;
    }
    setenv("ZEL_ROBUST", "1", 1);
    zelSetErrorHandler(nullptr, nullptr);
    EXPECT_EQ(writesOf([] { zelError(0x100, "on"); }), (Writes{"Error: ", "on\n"}));
    zelSetErrorHandler(zelSilentErrorHandler, nullptr);
    EXPECT_EQ(writesOf([] { zelError(zelSevError, "on"); }), Writes());
}

TEST_F(Handlers, CutALongLineInFrontOfItsNewline) {
    zelSetErrorHandler(zelRobustErrorHandler, nullptr);
    for (const std::size_t length : {0u, 253u, 254u, 255u, 256u, 5000u}) {
        const std::string text(length, 'x');
        const Writes writes = writesOf([&] { zelError(zelSevError, "%s", text.c_str()); });
        ASSERT_EQ(writes.size(), 2u);
        EXPECT_EQ(writes[1], text.substr(0, 254) + "\n") << length;
    }
}

TEST_F(Handlers, EndTheProcessByTheirRules) {
    const struct {
        zelErrorHandlerType handler;
        int severity, status;
        std::string printed;
    } cases[] = {
        {zelNaiveErrorHandler, zelSevError, 1, "Error: gone\n"},
        {zelNaiveErrorHandler, zelSevFatal, 1, "Fatal error: gone\n"},
        {zelNaiveErrorHandler, zelSevWarning, 42, "Warning: gone\n"},
        {zelRobustErrorHandler, zelSevError, 42, "Error: gone\n"},
        {zelRobustErrorHandler, zelSevFatal, 1, "Fatal error: gone\n"},
        {zelSilentErrorHandler, zelSevError, 42, ""},
        {zelSilentErrorHandler, zelSevFatal, 1, "Fatal error: gone\n"},
    };
    for (const auto& c : cases) {
        const auto reportAndGoOn = [&c] {
            zelSetErrorHandler(c.handler, nullptr);
            zelError(c.severity, "gone");
            std::exit(42);
        };
        EXPECT_EXIT(reportAndGoOn(), ExitedWithCode(c.status), Eq(c.printed));
    }
}

TEST_F(Handlers, PrintInfoByTheEnvironmentOfTheFirstTime) {
    const auto debugTwice = [](const char* before, const char* after, zelErrorHandlerType handler) {
        zelSetErrorHandler(handler, nullptr);
        setenv(before, "", 1);
        _zelDebug("one");
        unsetenv(before);
        setenv(after, "", 1);
        _zelDebug("two");
        std::exit(0);
    };
    const std::string both = "Info: one\nInfo: two\n";
    EXPECT_EXIT(debugTwice("ZEL_DEBUG", "OTHER", nullptr), ExitedWithCode(0), Eq(both));
    EXPECT_EXIT(debugTwice("KAV_DEBUG", "OTHER", nullptr), ExitedWithCode(0), Eq(both));
    EXPECT_EXIT(debugTwice("OTHER", "ZEL_DEBUG", nullptr), ExitedWithCode(0), Eq<std::string>(""));
    EXPECT_EXIT(debugTwice("ZEL_DEBUG", "OTHER", zelSilentErrorHandler), ExitedWithCode(0),
                Eq<std::string>(""));
}

TEST_F(Handlers, AreNotAskedByAssertions) {
    zelSetErrorHandler(zelSilentErrorHandler, nullptr);
    EXPECT_EXIT(__zelAssert(nullptr, "a", 1), KilledBySignal(SIGABRT),
                "^Internal ZEL error: file a, line 1, pid [0-9]+\n$");
    EXPECT_EXIT(__zelAssert("x > 0", "b.cpp", 22), KilledBySignal(SIGABRT),
                "^Internal ZEL error: assertion failed: x > 0, file b.cpp, line 22, pid [0-9]+\n$");
}

TEST(Version, IsThatOfTheHeaders) {
    const std::string major = std::to_string(ZEL_VERSION_MAJOR);
    EXPECT_EQ(libzelVersion, major + "." + std::to_string(ZEL_VERSION_MINOR));
}
