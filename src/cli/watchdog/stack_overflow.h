// stack_overflow.h: tells the overflow of the main thread's C stack from other faults of memory access.
#pragma once

#include <semaphore.h>

namespace kelhost {

// For as long as it lives, an overflow of the stack of the thread that made it posts the semaphore and holds that
// thread; all else that a signal tells of is left to whom it was left before. One at a time.
class StackOverflowAlarm {
public:
    explicit StackOverflowAlarm(sem_t &alarm);
    ~StackOverflowAlarm();
    StackOverflowAlarm(const StackOverflowAlarm &) = delete;
    StackOverflowAlarm &operator=(const StackOverflowAlarm &) = delete;
};

} // namespace kelhost
