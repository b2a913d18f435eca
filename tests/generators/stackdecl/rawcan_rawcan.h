/*
 * Declarations of the raw CAN stack that gen_rawcan.c and gen_mp.c refer
 * to, written for the compile tests from what the generated CAN-ID tables
 * and start functions need. The mapping rows are those of gen_pgn.c.
 */
#ifndef TEST_RAWCAN_H
#define TEST_RAWCAN_H 1

#include "j1939_j1939.h"

typedef UNSIGNED8 MP_PROTOCOL_TYPE_T;
typedef UNSIGNED8 CORE_PROTOCOL_TYPE_T;

typedef struct {
    UNSIGNED32 canId;
    const CORE_MAPPING_T *pMapping;
#ifdef TEST_STACK_V4
    UNSIGNED8 *const *pData;
#endif
    UNSIGNED16 cycleTime;
    UNSIGNED16 inhibitTime;
    UNSIGNED16 mappingCnt;
} RAWCAN_TR_CONFIG_T;

typedef struct {
    UNSIGNED32 canId;
    UNSIGNED32 ignoreMask;
#ifdef TEST_STACK_V4
    UNSIGNED16 monitorTime;
#endif
    const CORE_MAPPING_T *pMapping;
#ifdef TEST_STACK_V4
    UNSIGNED8 *const *pData;
#endif
    UNSIGNED16 mappingCnt;
} RAWCAN_REC_CONFIG_T;

typedef struct {
    RAWCAN_TR_CONFIG_T *pTransmit;
    UNSIGNED16 transmitCnt;
    RAWCAN_REC_CONFIG_T *pReceive;
    UNSIGNED16 receiveCnt;
} RAWCAN_CONFIG_T;

typedef struct {
    UNSIGNED8 version;
    UNSIGNED16 receive[TEST_LINES];
    UNSIGNED16 transmit[TEST_LINES];
} RAWCAN_SERVICE_INIT_VAL_T;

RET_T rawcanStackInit_common(const RAWCAN_SERVICE_INIT_VAL_T *pServices);
RET_T rawcanStackInit_line(TEST_LINE_ARG RAWCAN_CONFIG_T *pConfig);

#endif /* TEST_RAWCAN_H */
