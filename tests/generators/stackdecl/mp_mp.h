/*
 * Declarations of the multi-protocol stack that gen_mp.c refers to: the
 * CANopen, J1939 and raw CAN parts together, for the compile tests.
 */
#ifndef TEST_MP_H
#define TEST_MP_H 1

#include "rawcan_rawcan.h"

#endif /* TEST_MP_H */
