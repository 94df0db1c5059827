/* streams.c: a task that ends closes its streams, but the console behind them is all tasks'. */
#include <errno.h>

#include <sys/reent.h>

int _close_r(struct _reent *library, int descriptor);
int _close(int descriptor); /* the semihosting layer's */

int _close_r(struct _reent *library, int descriptor) {
    enum { LAST_OF_THE_CONSOLE = 2 };
    if (descriptor <= LAST_OF_THE_CONSOLE) return 0;
    errno = 0;
    const int result = _close(descriptor);
    if (result == -1 && errno != 0) library->_errno = errno;
    return result;
}
