/* Part of the test declarations of the stack: the V4 multi-protocol core. */
#include "mp_mp.h"
