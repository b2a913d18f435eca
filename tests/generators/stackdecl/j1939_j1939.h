/*
 * Declarations of the J1939 stack that gen_pgn.c refers to, written for the
 * compile tests from what the generated tables and j1939StackInit need.
 * TEST_STACK_V4 selects the V4 tables, whose mapping rows describe the
 * signal and leave the variable pointers to a table of their own.
 */
#ifndef TEST_J1939_H
#define TEST_J1939_H 1

#include "teststack.h"

#if defined(CO_CANFD_SUPPORTED) || defined(CORE_CANFD_SUPPORTED)
#define TEST_CANFD 1
#endif

/* Type tags of the mapping rows; the V4 declarations have the byte-wide ones. */
#ifndef TEST_STACK_V4
enum { CORE_DTYPE_U8 = 100, CORE_DTYPE_U16, CORE_DTYPE_U24, CORE_DTYPE_U32, CORE_DTYPE_U40, CORE_DTYPE_U48,
       CORE_DTYPE_U64, CORE_DTYPE_I8, CORE_DTYPE_I16, CORE_DTYPE_I32, CORE_DTYPE_R32, CORE_DTYPE_NON_NUMERIC };
#endif
enum { CORE_DTYPE_U1 = 200, CORE_DTYPE_U2, CORE_DTYPE_U3, CORE_DTYPE_U4, CORE_DTYPE_U5, CORE_DTYPE_U6,
       CORE_DTYPE_U7, CORE_DTYPE_U56, CORE_DTYPE_STRING_ASTERIKS, CORE_DTYPE_STRING_NULL };

typedef struct {
#ifdef TEST_STACK_V4
    UNSIGNED32 spn;
    UNSIGNED16 bitPosition;
    UNSIGNED16 bits;
    UNSIGNED8 dType;
#else
    void *pVar;
    UNSIGNED16 bits;
    UNSIGNED32 spn;
    UNSIGNED8 dType;
#endif
#ifdef J1939_DYNAMIC_PGN
    UNSIGNED8 flags;
#endif
} J1939_MAPPING_T;

/* Mapping row of a raw CAN identifier. */
typedef struct {
#ifdef TEST_STACK_V4
    UNSIGNED32 number;
    UNSIGNED16 bitPosition;
#else
    void *pVar;
#endif
    UNSIGNED16 bits;
    UNSIGNED8 dType;
} CORE_MAPPING_T;

/* Trailer format and assurance data type of a CAN FD message. */
enum { J1939_ATF_SAE_NONE, J1939_ATF_MANU_CYBERSEC_32, J1939_ATF_MANU_CYBERSEC_64, J1939_ATF_MANU_FUNC_SAFETY_32,
       J1939_ATF_MANU_FUNC_SAFETY_64, J1939_ATF_MANU_FUNC_CYB_SAFE_32 };
enum { J1939_ADT_NONE, J1939_ADT_MANU_CYBERSEC, J1939_ADT_MANU_FUNC_SAFETY, J1939_ADT_MANU_FUNC_CYB_SAFE };

typedef struct {
    UNSIGNED32 pgn;
    const J1939_MAPPING_T *pMapping;
#ifdef TEST_STACK_V4
    UNSIGNED8 *const *pData;
    UNSIGNED16 mappingCnt;
#ifdef J1939_MULTI_SRC_ADDR
    UNSIGNED8 multiSource;
#endif
    UNSIGNED16 cycleTime;
    UNSIGNED16 inhibitTime;
    UNSIGNED8 priority;
#else
    UNSIGNED16 cycleTime;
    UNSIGNED16 inhibitTime;
    UNSIGNED8 priority;
    UNSIGNED16 mappingCnt;
#endif
#ifdef TEST_CANFD
    UNSIGNED8 trailerFormat;
    UNSIGNED8 assuranceType;
    UNSIGNED8 assuranceSize;
#endif
} J1939_PGN_CONFIG_T;

typedef struct {
    const J1939_PGN_CONFIG_T *pTransmit;
    UNSIGNED16 transmitCnt;
    const J1939_PGN_CONFIG_T *pReceive;
    UNSIGNED16 receiveCnt;
    const J1939_PGN_CONFIG_T *pAddressClaim;
    UNSIGNED8 startAddress;
} J1939_CONFIG_T;

typedef struct {
    UNSIGNED8 version;
#ifdef TEST_STACK_V4
    UNSIGNED16 receiveConfigs[TEST_LINES];
#endif
    UNSIGNED16 receivePgns[TEST_LINES];
    UNSIGNED16 transmitPgns[TEST_LINES];
    UNSIGNED8 sdoServers[TEST_LINES];
    UNSIGNED8 sdoClients[TEST_LINES];
#ifdef J1939_SDG_SUPPORTED
    UNSIGNED16 sdgTransmit[TEST_LINES];
    UNSIGNED16 sdgReceive[TEST_LINES];
#endif
#ifdef TEST_CANFD
    UNSIGNED8 destBuffers[TEST_LINES];
#endif
} J1939_SERVICE_INIT_VAL_T;

/* The V4 stack brings the mapping of the NAME of the address claim. */
extern const J1939_MAPPING_T j1939AddressClaimMapping[];

RET_T j1939StackInit_common(const J1939_SERVICE_INIT_VAL_T *pServices);
RET_T j1939StackInit_line(TEST_LINE_ARG J1939_CONFIG_T *pConfig);
RET_T j1939OdInit(TEST_LINE_ONLY);

#endif /* TEST_J1939_H */
