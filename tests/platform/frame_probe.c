/* A function whose unwind rules are only in its debug information, on systems where a compiler can do that. */
#include "frame_probe.h"

int ProbeFrame(int (*inside)(void*), void* user)
{
    /* Enough values that live across the call to fill the registers that functions preserve. */
    int a = inside(user);
    int b = inside(user);
    int c = inside(user);
    int d = inside(user);
    int e = inside(user);
    return a + 2 * b + 3 * c + 5 * d + 7 * e;
}
