/* An add-in that can't do without another module, NEEDED, which is this file as well. */
#include "xll.h"

#ifdef NEEDED
XLL_EXPORT int IsNeeded(void) {
    return 1;
}
#else
int IsNeeded(void);
XLL_EXPORT int XLL_CALL xlAutoOpen(void) {
    return IsNeeded();
}
#endif
