#ifndef ZELKIT_JUMPGUARD_H
#define ZELKIT_JUMPGUARD_H

#include <csetjmp>
#include <cstdlib>

namespace zelkit {

/// Lets a codec of C leave by longjmp from its error callback. No frame between `run` and `jump`
/// may hold an object with a destructor.
class JumpGuard {
public:
    /// Calls `body`. False if it ended by `jump`.
    template <typename Body>
    bool run(Body body) {
        // Not inlined, so that no variable of the caller lives in a register across the jump.
        return runBody(&call<Body>, &body);
    }

    /// Ends the running body.
    [[noreturn]] void jump() {
        if (!armed_)
            std::abort();
        std::longjmp(place_, 1);
    }

private:
    template <typename Body>
    static void call(void* body) {
        (*static_cast<Body*>(body))();
    }

    [[gnu::noinline]] bool runBody(void (*function)(void*), void* body) {
        armed_ = true;
        if (setjmp(place_) != 0) {
            armed_ = false;
            return false;
        }
        function(body);
        armed_ = false;
        return true;
    }

    std::jmp_buf place_{};
    bool armed_ = false;
};

} // namespace zelkit

#endif
