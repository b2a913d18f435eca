/* Part of the test declarations of the stack. */
#include "teststack.h"
