#include <zel/zelError.h>

#include "platform/debugChannel.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>
#include <unistd.h>

namespace {

zelErrorHandlerType _zelGlobalErrorHandler = nullptr;
void* _zelGlobalErrorHandlerArg = nullptr;

const char* const mainStatusTexts[] = {
    "Successful operation",
    "Object is not writable",
    "Object is not readable",
    "Bad parameter(s)",
    "Attempted operation is unsupported by library",
    "Attempted operation is unsupported by file format",
    "Unrecognized magic number in file",
    "Bad image file format",
    "Failed to set field in file header",
    "Failed to get field in file header",
    "System configuration error",
    "Image index out of range of file",
    "Can't allocate memory",
    "File open failed",
    "File close failed",
    "File read failed",
    "File write failed",
    "File seek failed",
    "File stat failed",
    "Can't open file type database",
    "Script execution failed",
    "Premature end of file",
    "Corrupted image data",
    "Attempted operation is unsupported by file",
};

constexpr std::size_t messageSize = 256;

int severityOf(int flags) {
    return flags & 0xFF;
}

const char* severityWord(int severity) {
    switch (severity) {
    case zelSevError:
        return "Error";
    case zelSevFatal:
        return "Fatal error";
    case zelSevWarning:
        return "Warning";
    case zelSevInfo:
        return "Info";
    default:
        return "(unrecognized severity)";
    }
}

bool isSet(const char* variable) {
    return std::getenv(variable) != nullptr;
}

bool debugIsOn() {
    static int debug = -1;
    if (debug == -1)
        debug = isSet("ZEL_DEBUG") || isSet("KAV_DEBUG") ? 1 : 0;
    return debug != 0;
}

// Prints one line. A message that does not fit is cut in front of its newline.
__attribute__((format(printf, 1, 0))) void printLine(const char* fmt, va_list args) {
    char line[messageSize];
    const int needed = std::vsnprintf(line, sizeof line - 1, fmt, args);
    std::size_t length = 0;
    if (needed > 0)
        length = std::min(static_cast<std::size_t>(needed), sizeof line - 2);
    line[length] = '\n';
    zel::platform::writeDebug(std::string_view(line, length + 1));
}

__attribute__((format(printf, 1, 2))) void printLine(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    printLine(fmt, args);
    va_end(args);
}

__attribute__((format(printf, 3, 0))) void
_zelNaiveOrRobustErrorHandler(void* /*arg*/, int flags, const char* fmt, va_list args) {
    const int severity = severityOf(flags);
    if (severity == zelSevInfo && !debugIsOn())
        return;
    char prefix[messageSize];
    std::snprintf(prefix, sizeof prefix, "%s: ", severityWord(severity));
    zel::platform::writeDebug(prefix);
    printLine(fmt, args);
}

zelErrorHandlerType chooseByEnvironment() {
    if (isSet("ZEL_SILENT"))
        return zelSilentErrorHandler;
    if (isSet("ZEL_ROBUST"))
        return zelRobustErrorHandler;
    return zelNaiveErrorHandler;
}

} // namespace

char* zelMainStatusToString(zelMainStatus status) {
    const auto value = static_cast<std::size_t>(static_cast<int>(status));
    const char* text = value < std::size(mainStatusTexts) ? mainStatusTexts[value]
                                                          : "(unrecognized zelMainStatus value)";
    return const_cast<char*>(text);
}

char* zelStatusToString(zelStatus sts, char* buf, int bufsize) {
    if (bufsize < 1)
        return buf;
    const auto length = static_cast<std::size_t>(bufsize) - 1;
    const char* text = zelStatusKind(sts) == 1 ? std::strerror(zelStatusErrno(sts))
                                               : zelMainStatusToString(zelStatusMain(sts));
    std::strncpy(buf, text, length);
    buf[length] = '\0';
    return buf;
}

void zelGetErrorHandler(zelErrorHandlerType* handler, void** arg) {
    if (!_zelGlobalErrorHandler) {
        _zelGlobalErrorHandler = chooseByEnvironment();
        _zelGlobalErrorHandlerArg = nullptr;
    }
    *handler = _zelGlobalErrorHandler;
    *arg = _zelGlobalErrorHandlerArg;
}

void zelSetErrorHandler(zelErrorHandlerType newhandler, void* newarg) {
    _zelGlobalErrorHandler = newhandler;
    _zelGlobalErrorHandlerArg = newarg;
}

void zelNaiveErrorHandler(void* arg, int flags, const char* fmt, va_list args) {
    _zelNaiveOrRobustErrorHandler(arg, flags, fmt, args);
    const int severity = severityOf(flags);
    if (severity == zelSevError || severity == zelSevFatal)
        std::exit(1);
}

void zelRobustErrorHandler(void* arg, int flags, const char* fmt, va_list args) {
    _zelNaiveOrRobustErrorHandler(arg, flags, fmt, args);
    if (severityOf(flags) == zelSevFatal)
        std::exit(1);
}

void zelSilentErrorHandler(void* arg, int flags, const char* fmt, va_list args) {
    if (severityOf(flags) != zelSevFatal)
        return;
    _zelNaiveOrRobustErrorHandler(arg, flags, fmt, args);
    std::exit(1);
}

void zelErrorV(int flags, const char* fmt, va_list args) {
    zelErrorHandlerType handler = nullptr;
    void* arg = nullptr;
    zelGetErrorHandler(&handler, &arg);
    handler(arg, flags, fmt, args);
}

void zelError(int flags, const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    zelErrorV(flags, fmt, args);
    va_end(args);
}

void _zelDebug(const char* fmt, ...) {
    va_list args;
    va_start(args, fmt);
    zelErrorV(zelSevInfo, fmt, args);
    va_end(args);
}

void __zelAssert(const char* expr, const char* file, int line) {
    const int pid = static_cast<int>(getpid());
    if (expr)
        printLine("Internal ZEL error: assertion failed: %s, file %s, line %d, pid %d", expr, file,
                  line, pid);
    else
        printLine("Internal ZEL error: file %s, line %d, pid %d", file, line, pid);
    std::abort();
}

zelSetLocalErrorHandler::zelSetLocalErrorHandler(zelErrorHandlerType handler, void* arg)
    : old_handler(nullptr), old_arg(nullptr) {
    zelGetErrorHandler(&old_handler, &old_arg);
    zelSetErrorHandler(handler, arg);
}

zelSetLocalErrorHandler::~zelSetLocalErrorHandler() {
    zelSetErrorHandler(old_handler, old_arg);
}
