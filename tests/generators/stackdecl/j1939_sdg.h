/*
 * Declarations of the J1939 safety data message service that gen_sdg.c
 * refers to, written for the compile tests from what the generated functions
 * and the SDG module need. TEST_STACK_V4 selects the V4 configuration rows.
 */
#ifndef TEST_J1939_SDG_H
#define TEST_J1939_SDG_H 1

#include "j1939_j1939.h"

/* The J1939 widths that have a name of their own. */
typedef UNSIGNED8 BOOLEAN;
typedef UNSIGNED8 UNSIGNED2, UNSIGNED3, UNSIGNED4, UNSIGNED5, UNSIGNED6, UNSIGNED7;
typedef UNSIGNED16 UNSIGNED9, UNSIGNED10, UNSIGNED12, UNSIGNED14;

/* The line parameter of a multi-line function is called canLine. */
#define CO_LINE canLine
#define CAN_LINE canLine

#define J1939_ADDR_NOT_VALID 0xFFu
#ifndef J1939_SDG_REC_ADDR_CNT
#define J1939_SDG_REC_ADDR_CNT 1u
#endif

/* One sender of a received SDG. */
typedef struct {
    UNSIGNED8 srcAddr;
    UNSIGNED32 elapsed;
} SDG_REC_T;

typedef struct {
    UNSIGNED32 pgn;
    UNSIGNED32 cycleTime;
    UNSIGNED32 inhibitTime;
#ifdef TEST_STACK_V4
    UNSIGNED16 srvt;
    UNSIGNED8 safetyType;
#endif
} SDG_REC_CONFIG_T;

#ifdef TEST_STACK_V4
typedef struct {
    UNSIGNED32 pgn;
    UNSIGNED32 cycleTime;
    UNSIGNED8 safetyType;
} SDG_TRANS_CONFIG_T;
#endif

/* The application learns of each SDG before it is sent. */
void sdgProducerIndication(TEST_LINE_ARG UNSIGNED32 pgn);

#endif /* TEST_J1939_SDG_H */
