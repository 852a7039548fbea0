#ifndef ZEL_ERROR_H
#define ZEL_ERROR_H

#include <zel/zelExport.h>

#include <cstdarg>

/// Result of an operation. Bits 0 to 11 hold a zelMainStatus, bits 12 to 15 the kind (0: the main
/// status says all; 1: a system error came with it), bits 16 to 31 the errno of a kind 1.
/// A status of kind 0 equals its zelMainStatus; a status of kind 1 never does.
enum zelStatus : int {
    zelOKAY = 0
};

/// What went wrong. zelMainStatusToString gives the words.
enum zelMainStatus : int {
    zelREADONLY = 1,
    zelWRITEONLY = 2,
    zelBADPARAMS = 3,
    zelUNSUPPORTEDBYLIBRARY = 4,
    zelUNSUPPORTEDBYFORMAT = 5,
    zelBADMAGIC = 6,
    zelBADIMGFMT = 7,
    zelBADFIELDSET = 8,
    zelBADFIELDGET = 9,
    zelSYSTEM_CONFIGURATION_ERROR = 10,
    zelFILEINDEXOOB = 11,
    zelMALLOCFAILED = 12,
    zelOPENFAILED = 13,
    zelCLOSEFAILED = 14,
    zelREADFAILED = 15,
    zelWRITEFAILED = 16,
    zelSEEKFAILED = 17,
    zelSTATFAILED = 18,
    zelDBOPENFAILED = 19,
    zelSCRIPTFAILED = 20,
    zelPREMATUREEOF = 21,
    zelCORRUPTED = 22,
    zelUNSUPPORTEDBYFILE = 23
};

/// Makes a status. For a failed system call: zelStatusEncode(zelREADFAILED, 1, errno).
/// Each field is cut to its width.
constexpr zelStatus zelStatusEncode(zelMainStatus mainStatus, int kind = 0, int systemError = 0) {
    return static_cast<zelStatus>(((static_cast<unsigned>(systemError) & 0xFFFFu) << 16) |
                                  ((static_cast<unsigned>(kind) & 0xFu) << 12) |
                                  (static_cast<unsigned>(mainStatus) & 0xFFFu));
}

/// The main status of a status, 0 for zelOKAY.
constexpr zelMainStatus zelStatusMain(zelStatus status) {
    return static_cast<zelMainStatus>(static_cast<unsigned>(status) & 0xFFFu);
}

/// The kind of a status, 0 to 15.
constexpr int zelStatusKind(zelStatus status) {
    return static_cast<int>((static_cast<unsigned>(status) >> 12) & 0xFu);
}

/// The system error of a status, 0 to 65535.
constexpr int zelStatusErrno(zelStatus status) {
    return static_cast<int>(static_cast<unsigned>(status) >> 16);
}

constexpr bool operator==(zelStatus a, zelMainStatus b) {
    return static_cast<int>(a) == static_cast<int>(b);
}
constexpr bool operator!=(zelStatus a, zelMainStatus b) {
    return !(a == b);
}
constexpr bool operator==(zelMainStatus a, zelStatus b) {
    return b == a;
}
constexpr bool operator!=(zelMainStatus a, zelStatus b) {
    return !(b == a);
}

/// Severity of a report: the low 8 bits of its flags.
enum : int {
    zelSevError = 0,
    zelSevFatal = 1,
    zelSevWarning = 2,
    zelSevInfo = 3
};

/// Receives the reports. `arg` is what was installed with the handler, `flags` what the reporter
/// passed, all 32 bits of it. A handler may return at any severity.
typedef void zelErrorHandlerFunc(void* arg, int flags, const char* fmt, va_list args);
typedef zelErrorHandlerFunc* zelErrorHandlerType;

// There is one handler in a process and no lock: one thread at a time reports or changes it.

extern "C" {

/// The words of a main status, "(unrecognized zelMainStatus value)" for any other value. The text
/// is static: the caller neither frees nor changes it.
ZEL_API char* zelMainStatusToString(zelMainStatus status);

/// Writes the words of `sts` into `buf`, cut to `bufsize` - 1 characters and always ended by a zero
/// byte, and returns `buf`. A status of kind 1 gives the system's words for its error, any other
/// the words of its main status. With a `bufsize` below 1 nothing is written.
ZEL_API char* zelStatusToString(zelStatus sts, char* buf, int bufsize);

/// Stores the current handler and its argument; both pointers must be valid. If none is set, one
/// is chosen for good by the environment: ZEL_SILENT the silent one, else ZEL_ROBUST the robust
/// one, else the naive one, with a null argument. Only the presence of a variable counts.
ZEL_API void zelGetErrorHandler(zelErrorHandlerType* handler, void** arg);

/// Installs a handler. A null one means that the next report chooses by the environment again.
ZEL_API void zelSetErrorHandler(zelErrorHandlerType newhandler, void* newarg);

/// Prints every report to the debug channel, zelSevInfo only if ZEL_DEBUG or KAV_DEBUG was set at
/// the first such report. Ends the process with exit(1) on zelSevError and zelSevFatal.
ZEL_API void zelNaiveErrorHandler(void* arg, int flags, const char* fmt, va_list args);

/// Prints as the naive handler does, and ends the process with exit(1) on zelSevFatal only.
ZEL_API void zelRobustErrorHandler(void* arg, int flags, const char* fmt, va_list args);

/// Prints zelSevFatal only, and ends the process with exit(1) on it.
ZEL_API void zelSilentErrorHandler(void* arg, int flags, const char* fmt, va_list args);

} // extern "C"

/// Reports a fault that no status can carry to the current handler. `fmt` takes the conversions of
/// printf. Returns whenever the handler does, at any severity, so go on with a failure result.
ZEL_API void zelError(int flags, const char* fmt, ...) __attribute__((format(printf, 2, 3)));
ZEL_API void zelErrorV(int flags, const char* fmt, va_list args)
    __attribute__((format(printf, 2, 0)));

/// Reports with zelSevInfo.
ZEL_API void _zelDebug(const char* fmt, ...) __attribute__((format(printf, 1, 2)));

/// Prints an internal failure to the debug channel, whatever handler is installed, and aborts.
/// `expr` is the text of the condition that did not hold, or null.
[[noreturn]] ZEL_API void __zelAssert(const char* expr, const char* file, int line);

/// Gives a block of code its own handler: the constructor installs it for the whole process, the
/// destructor puts the former handler and argument back.
class ZEL_API zelSetLocalErrorHandler {
public:
    zelSetLocalErrorHandler(zelErrorHandlerType handler, void* arg);
    ~zelSetLocalErrorHandler();
    zelSetLocalErrorHandler(const zelSetLocalErrorHandler&) = delete;
    zelSetLocalErrorHandler& operator=(const zelSetLocalErrorHandler&) = delete;

protected:
    zelErrorHandlerType old_handler;
    void* old_arg;
};

#endif
