/* SPDX-License-Identifier: MIT */
/* Which call of a host service or of a callback fails, and how.

   Every service of the recording host asks the plan first, and so does every callback that a sweep hands to a container.
   Unarmed, the plan does nothing. */
#ifndef MOVA_TESTS_SUPPORT_FAULT_PLAN_H
#define MOVA_TESTS_SUPPORT_FAULT_PLAN_H

#include <csetjmp>

namespace mova::test {

/* What fails: a block asked of the memory service, a block or an address asked of a pool, a raise, text written or a call
   of the debugger's hook, a callback. Giving back never fails. */
enum class fault_source { allocation, pool_allocation, pool_address, raise, text, callback };

/* How it fails: by an exception, by a jump, or in the ordinary way (a null answer, a raise that is returned from). */
enum class fault_way { throws, jumps, answers };

/* What a failing service or callback throws. */
struct fault {};

class fault_plan {
public:
    /* The plan of the process. */
    static fault_plan &get();

    /* Makes the nth call (1 is the next one) of `source` fail, and where `lasting` every one that follows. */
    void arm(fault_source source, fault_way way, int nth, bool lasting = false);

    void disarm() { calls_left_ = 0; }

    /* Whether a call has failed since the plan was armed. */
    bool has_struck() const { return has_struck_; }

    /* Where jumps go. */
    std::jmp_buf &target() { return target_; }

    /* Counts a call. One that is to fail ends here by an exception or a jump, or returns true: the caller answers with
       a failure. Nothing that needs a destructor may live in the caller yet. */
    bool strikes(fault_source source);

private:
    fault_source source_{};
    fault_way way_{};
    int calls_left_ = 0; /* up to the failing one, that included; 0 for none */
    bool lasting_ = false, has_struck_ = false;
    std::jmp_buf target_;
};

/* What a sweep's callbacks begin with. */
inline void callback_called()
{
    fault_plan::get().strikes(fault_source::callback);
}

} // namespace mova::test

#endif
