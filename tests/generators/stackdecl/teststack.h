/*
 * Declarations of the stack types, macros and functions that gen_objdict.c
 * refers to, written for the compile tests of the generated code. The same
 * header serves the classic and the V4 stack; TEST_STACK_V4 selects the V4
 * vocabulary, and CO_MULTI_LINE / CAN_MULTI_LINE from gen_define.h select
 * the signatures that take the CAN line first.
 */
#ifndef TEST_STACK_H
#define TEST_STACK_H 1

#include <stddef.h>
#include <string.h>

typedef unsigned char UNSIGNED8;
typedef unsigned short UNSIGNED16;
typedef unsigned long UNSIGNED32;
typedef signed char INTEGER8;
typedef short INTEGER16;
typedef long INTEGER32;
typedef float REAL32;
typedef struct { UNSIGNED8 byte[3]; } UNSIGNED24;
typedef struct { UNSIGNED8 byte[5]; } UNSIGNED40;
typedef struct { UNSIGNED8 byte[6]; } UNSIGNED48;
typedef struct { UNSIGNED8 byte[8]; } UNSIGNED64;
typedef struct { UNSIGNED8 byte[3]; } INTEGER24;
/* Initialisers of the wide types, most significant byte first. */
#define U24_SET(b2, b1, b0) {{ b0, b1, b2 }}
#define I24_SET(b2, b1, b0) {{ b0, b1, b2 }}
#define U40_SET(b4, b3, b2, b1, b0) {{ b0, b1, b2, b3, b4 }}
#define U48_SET(b5, b4, b3, b2, b1, b0) {{ b0, b1, b2, b3, b4, b5 }}
#define U64_SET(b7, b6, b5, b4, b3, b2, b1, b0) {{ b0, b1, b2, b3, b4, b5, b6, b7 }}

typedef char *VIS_STRING;
typedef char *UTF8_STRING;
typedef UNSIGNED8 OCTET_STRING;
typedef UNSIGNED8 *CO_DOMAIN_PTR;
typedef UNSIGNED8 BOOL_T;
#define CO_TRUE 1u
#define CO_FALSE 0u

typedef enum { RET_OK, RET_INVALID_PARAMETER, RET_PARAMETER_INVALID, RET_CO_MAP_ERROR, RET_MAP_ERROR,
               RET_SERVICE_NOT_INITIALIZED, RET_NOT_INITIALIZED, RET_IDX_NOT_FOUND } RET_T;

/* Attributes of a description row. */
#define CO_ATTR_NUM 0x0001u
#define CO_ATTR_READ 0x0002u
#define CO_ATTR_WRITE 0x0004u
#define CO_ATTR_MAP_TR 0x0008u
#define CO_ATTR_MAP_REC 0x0010u
#define CO_ATTR_DEFVAL 0x0020u
#define CO_ATTR_LIMIT 0x0040u
#define CO_ATTR_STORE 0x0080u
#define CO_ATTR_COMPACT 0x0100u
#define CO_ATTR_DYNOD 0x0200u

enum { CO_ODTYPE_VAR, CO_ODTYPE_ARRAY, CO_ODTYPE_STRUCT, CO_ODTYPE_DOM };

/* Data type words: a type word per value type and one per service that owns objects. */
#define TEST_SERVICE_WORDS(P, T)                                                                               \
    P##T##_CONST, P##T##_SYNC, P##T##_EMCY, P##T##_ERRCTRL, P##T##_STORE, P##T##_TIME, P##T##_NMT,         \
        P##T##_SDO_SERVER, P##T##_SDO_CLIENT, P##T##_GFC, P##T##_SRDO, P##T##_RPDO, P##T##_RMAP, P##T##_TPDO, \
        P##T##_TMAP, P##T##_SRD, P##T##_NETWORK, P##T##_FLYMA, P##T##_VAR, P##T##_PTR, P##T
#define TEST_TYPE_WORDS(P)                                                                                     \
    TEST_SERVICE_WORDS(P, BOOL), TEST_SERVICE_WORDS(P, U8), TEST_SERVICE_WORDS(P, U16),                         \
        TEST_SERVICE_WORDS(P, U24), TEST_SERVICE_WORDS(P, U32), TEST_SERVICE_WORDS(P, U40),                     \
        TEST_SERVICE_WORDS(P, U48), TEST_SERVICE_WORDS(P, U64), TEST_SERVICE_WORDS(P, I8),                      \
        TEST_SERVICE_WORDS(P, I16), TEST_SERVICE_WORDS(P, I24), TEST_SERVICE_WORDS(P, I32),                     \
        TEST_SERVICE_WORDS(P, R32), TEST_SERVICE_WORDS(P, VS), TEST_SERVICE_WORDS(P, OS),                       \
        TEST_SERVICE_WORDS(P, UTF8), TEST_SERVICE_WORDS(P, DOMAIN)

#ifdef TEST_STACK_V4
enum { CORE_DTYPE_BOOL, CORE_DTYPE_U8, CORE_DTYPE_U16, CORE_DTYPE_U24, CORE_DTYPE_U32, CORE_DTYPE_U40,
       CORE_DTYPE_U48, CORE_DTYPE_U64, CORE_DTYPE_I8, CORE_DTYPE_I16, CORE_DTYPE_I24, CORE_DTYPE_I32,
       CORE_DTYPE_R32, CORE_DTYPE_VS, CORE_DTYPE_OS, CORE_DTYPE_UTF8, CORE_DTYPE_DOMAIN, CORE_DTYPE_NON_NUMERIC };
enum { CO_DSPEC_CONST, CO_DSPEC_SYNC, CO_DSPEC_EMCY, CO_DSPEC_ERRCTRL, CO_DSPEC_STORE, CO_DSPEC_TIME,
       CO_DSPEC_NMT, CO_DSPEC_SDO_SERVER, CO_DSPEC_SDO_CLIENT, CO_DSPEC_GFC, CO_DSPEC_SRDO, CO_DSPEC_RPDO,
       CO_DSPEC_RMAP, CO_DSPEC_TPDO, CO_DSPEC_TMAP, CO_DSPEC_SRD, CO_DSPEC_NETWORK, CO_DSPEC_FLYMA,
       CO_DSPEC_VAR, CO_DSPEC_PTR, CO_DSPEC };
#define TEST_MULTI_LINE CAN_MULTI_LINE
#ifdef CAN_MULTI_LINE
#define TEST_LINE_ARG UNSIGNED8 canLine,
#define TEST_LINE_ONLY UNSIGNED8 canLine
#endif
#else
enum { TEST_TYPE_WORDS(CO_DTYPE_) };
#ifdef CO_MULTI_LINE
#define TEST_LINE_ARG UNSIGNED8 canLine,
#define TEST_LINE_ONLY UNSIGNED8 canLine
#endif
#endif
#ifndef TEST_LINE_ARG
#define TEST_LINE_ARG
#define TEST_LINE_ONLY void
#endif

typedef struct {
    UNSIGNED8 subIndex;
    UNSIGNED16 dType;
#ifdef TEST_STACK_V4
    UNSIGNED8 dSpec;
#endif
    UNSIGNED16 tableIdx;
    UNSIGNED16 attr;
    UNSIGNED16 defValIdx;
    UNSIGNED16 limitMinIdx;
    UNSIGNED16 limitMaxIdx;
} CO_OBJECT_DESC_T;

typedef struct {
    UNSIGNED16 index;
    UNSIGNED8 numberOfSubs;
    UNSIGNED8 highestSub;
    UNSIGNED8 odType;
    UNSIGNED16 odDescIdx;
} CO_OD_ASSIGN_T;

#ifndef CO_MAX_MAP_ENTRIES
#define CO_MAX_MAP_ENTRIES 1
#endif
#define TEST_MAX_ROUTES 8
typedef struct {
    const void *pVar;
    UNSIGNED8 len;
    UNSIGNED8 numeric;
    UNSIGNED32 val;
} PDO_TR_MAP_ENTRY_T;
typedef struct {
    UNSIGNED8 mapCnt;
    PDO_TR_MAP_ENTRY_T mapEntry[CO_MAX_MAP_ENTRIES];
} PDO_TR_MAP_TABLE_T;
typedef struct {
    const void *pVar;
    UNSIGNED8 len;
    UNSIGNED8 numeric;
    UNSIGNED32 val;
    UNSIGNED16 routeIdx[TEST_MAX_ROUTES];
} PDO_REC_MAP_ENTRY_T;
typedef struct {
    UNSIGNED8 mapCnt;
    PDO_REC_MAP_ENTRY_T mapEntry[CO_MAX_MAP_ENTRIES];
} PDO_REC_MAP_TABLE_T;

typedef struct {
    const UNSIGNED8 *constU8;
    const UNSIGNED16 *constU16;
    const UNSIGNED32 *constU32;
    const REAL32 *constR32;
#ifdef CO_EXTENDED_DATA_TYPES
    const UNSIGNED24 *constU24;
    const UNSIGNED40 *constU40;
    const UNSIGNED48 *constU48;
    const UNSIGNED64 *constU64;
#endif
    UNSIGNED8 *u8;
    UNSIGNED16 *u16;
    UNSIGNED32 *u32;
    REAL32 *r32;
#ifdef CO_EXTENDED_DATA_TYPES
    UNSIGNED24 *u24;
    UNSIGNED40 *u40;
    UNSIGNED48 *u48;
    UNSIGNED64 *u64;
#endif
    const INTEGER8 *constI8;
    const INTEGER16 *constI16;
    const INTEGER32 *constI32;
    INTEGER8 *i8;
    INTEGER16 *i16;
    INTEGER32 *i32;
    UNSIGNED8 *const *ptrU8;
    UNSIGNED16 *const *ptrU16;
    UNSIGNED32 *const *ptrU32;
    UNSIGNED24 *const *ptrU24;
    UNSIGNED40 *const *ptrU40;
    UNSIGNED48 *const *ptrU48;
    UNSIGNED64 *const *ptrU64;
    INTEGER8 *const *ptrI8;
    INTEGER16 *const *ptrI16;
    INTEGER32 *const *ptrI32;
    REAL32 *const *ptrR32;
    const VIS_STRING *constVisString;
    const UNSIGNED32 *constVisStringLen;
    VIS_STRING *visString;
    UNSIGNED32 *visStringLen;
    UNSIGNED32 *visStringActLen;
#ifdef CO_UTF8_DATA_TYPE
    const UTF8_STRING *constUtf8String;
    const UNSIGNED32 *constUtf8StringLen;
    VIS_STRING *utf8String;
    UNSIGNED32 *utf8StringLen;
    UNSIGNED32 *utf8StringActLen;
#endif
    OCTET_STRING **octetString;
    UNSIGNED32 *octetStringLen;
    UNSIGNED32 *octetStringActLen;
    CO_DOMAIN_PTR *domain;
    UNSIGNED32 *domainLen;
    UNSIGNED32 *domainActLen;
} CO_OD_DATA_VARIABLES_T;

/* The application's access function of a virtual object. */
typedef RET_T (*CO_VOBJ_FCT_T)(BOOL_T write, void *pData, UNSIGNED32 size);

/* Initialisation structures: one entry per line in each count list. */
#define TEST_LINES 32
typedef struct {
#ifdef TEST_INIT_VERSIONED
    UNSIGNED8 version;
#endif
    UNSIGNED16 objects[TEST_LINES];
    UNSIGNED16 txPdos[TEST_LINES];
    UNSIGNED16 rxPdos[TEST_LINES];
#ifdef CO_SRDO_SUPPORTED
    UNSIGNED16 srdos[TEST_LINES];
#endif
    UNSIGNED16 sdoServers[TEST_LINES];
    UNSIGNED16 sdoClients[TEST_LINES];
#ifdef TEST_STACK_V4
#ifdef CO_USDO_SERVER_MAX_CONN_CNT
    UNSIGNED16 usdoServerConnections[TEST_LINES];
#endif
#ifdef CO_USDO_CLIENT_MAX_CONN_CNT
    UNSIGNED16 usdoClientConnections[TEST_LINES];
#endif
#endif
    UNSIGNED16 errCtrl[TEST_LINES];
    UNSIGNED16 errHist[TEST_LINES];
    UNSIGNED16 actErrHist[TEST_LINES];
    UNSIGNED16 emcyConsumers[TEST_LINES];
#ifdef CO_NETWORK_ROUTING_CNT
    UNSIGNED16 routes[TEST_LINES];
#endif
    UNSIGNED16 assigns[TEST_LINES];
    UNSIGNED16 guarding[TEST_LINES];
    UNSIGNED8 nodeIds[TEST_LINES];
    UNSIGNED8 (*nodeIdFunctions[TEST_LINES])(void);
    BOOL_T fdMode[TEST_LINES];
} CO_SERVICE_INIT_VAL_T;

#ifdef TEST_STACK_V4
#define TEST_COMMON_COUNT(name) CORE_##name
typedef enum { CORE_PROT_TYPE_UNKNOWN = 0, CORE_PROT_TYPE_CANOPEN = 1, CORE_PROT_TYPE_J1939 = 2,
               CORE_PROT_TYPE_RAWCAN = 4, CORE_PROT_TYPE_UDS = 8 } TEST_PROTOCOL_T;
#else
typedef enum { MP_PROT_TYPE_UNKNOWN = 0, MP_PROT_TYPE_CANOPEN = 1, MP_PROT_TYPE_J1939 = 2,
               MP_PROT_TYPE_RAWCAN = 4, MP_PROT_TYPE_UDS = 8 } TEST_PROTOCOL_T;
#endif
typedef struct {
    UNSIGNED8 version;
    UNSIGNED16 recBuffers[TEST_LINES];
    UNSIGNED16 trBuffers[TEST_LINES];
    UNSIGNED16 cobs[TEST_LINES];
    UNSIGNED8 protocolType[TEST_LINES];
#ifdef ISOTP_SUPPORTED
    UNSIGNED8 isoTpClients[TEST_LINES];
    UNSIGNED8 isoTpServers[TEST_LINES];
#endif
    BOOL_T fdMode[TEST_LINES];
} CO_COMMON_INIT_VAL_T;
typedef CO_COMMON_INIT_VAL_T CORE_COMMON_INIT_VAL_T;

typedef struct { UNSIGNED8 master; } CO_INIT_OPTION_T;
typedef RET_T (*CO_EVENT_STORE_T)(TEST_LINE_ARG UNSIGNED16 index, UNSIGNED8 subIndex);

RET_T commonStackInit(CO_COMMON_INIT_VAL_T *pCommon);
RET_T coreStackInit(CORE_COMMON_INIT_VAL_T *pCommon);
RET_T coCanOpenStackVarInit(CO_SERVICE_INIT_VAL_T *pServices);
void coOdInitOdPtr(TEST_LINE_ARG const CO_OD_ASSIGN_T *pAssign, UNSIGNED16 assignCnt,
                   const CO_OBJECT_DESC_T *pDesc, UNSIGNED16 descCnt, void *pExtension,
                   const CO_OD_DATA_VARIABLES_T *pVariables);
void coLedInit(TEST_LINE_ONLY);
RET_T coSdoServerInit(TEST_LINE_ARG UNSIGNED8 server);
RET_T coUsdoServerInit(TEST_LINE_ONLY);
RET_T coSdoClientInit(TEST_LINE_ARG UNSIGNED8 client);
RET_T coUsdoClientInit(TEST_LINE_ONLY);
RET_T coErrorCtrlInit(TEST_LINE_ARG UNSIGNED16 heartbeatTime, UNSIGNED8 consumers);
RET_T coEmcyProducerInit(TEST_LINE_ONLY);
RET_T coSyncInit(TEST_LINE_ARG UNSIGNED32 cobId, UNSIGNED32 period, UNSIGNED8 overflow);
RET_T coEmcyConsumerInit(TEST_LINE_ARG UNSIGNED8 consumers);
RET_T coTimeInit(TEST_LINE_ARG BOOL_T consumer, BOOL_T producer);
RET_T coPdoTransmitInit(TEST_LINE_ARG UNSIGNED16 pdo, UNSIGNED8 transType, UNSIGNED16 inhibit,
                        UNSIGNED16 eventTimer, UNSIGNED8 syncStart, const PDO_TR_MAP_TABLE_T *pMap);
RET_T coPdoReceiveInit(TEST_LINE_ARG UNSIGNED16 pdo, UNSIGNED8 transType, UNSIGNED16 inhibit,
                       UNSIGNED16 eventTimer, const PDO_REC_MAP_TABLE_T *pMap);
RET_T coSrdInit(TEST_LINE_ONLY);
RET_T coGfcInit(TEST_LINE_ARG BOOL_T producer, BOOL_T consumer);
RET_T coSrdoInit(TEST_LINE_ARG UNSIGNED16 srdo);
RET_T isoTpInit(TEST_LINE_ONLY);
RET_T coIdNegoInit(TEST_LINE_ONLY);
RET_T coGuardingInit(TEST_LINE_ONLY);
RET_T coEventRegister_LOAD_PARA(CO_EVENT_STORE_T pFunction);
RET_T coLssMasterInit(TEST_LINE_ONLY);
RET_T coLssInit(TEST_LINE_ONLY);
RET_T coNmtInit(TEST_LINE_ARG UNSIGNED8 master);
RET_T coPdoNetworkRouting(void);
RET_T coOdGetDefaultVal_u32(TEST_LINE_ARG UNSIGNED16 index, UNSIGNED8 subIndex, UNSIGNED32 *pValue);
RET_T coOdSetCobid(TEST_LINE_ARG UNSIGNED16 index, UNSIGNED8 subIndex, UNSIGNED32 cobId);
UNSIGNED8 coNmtGetNodeId(TEST_LINE_ONLY);

/* The line table of a multi-line V4 stack is as long as the number of lines. */
#ifdef CAN_MULTI_LINE_CNT
#define CAN_LINE_ARRAY_DECL CAN_MULTI_LINE_CNT
#endif
#ifdef CO_MULTI_LINE_CNT
#define CO_LINE_ARRAY_DECL CO_MULTI_LINE_CNT
#endif
/* The loop variable of the multi-line start-up is used only on CAN FD lines. */
#define CO_LINE_TYPE __attribute__((unused)) UNSIGNED8
#define CAN_LINE_TYPE __attribute__((unused)) UNSIGNED8

/* Indication function types. */
typedef void (*TEST_INDICATION_T)(void);
typedef TEST_INDICATION_T CO_EVENT_SDO_SERVER_T, CO_EVENT_SDO_SERVER_FUNCTION_T, CO_EVENT_SDO_SERVER_CHECK_WRITE_T,
    CO_EVENT_PDO_T, CO_EVENT_PDO_UPDATE_T, CO_EVENT_NMT_T, CO_EVENT_ERRCTRL_T, CO_EVENT_SYNC_T,
    CO_EVENT_SYNC_FINISHED_T, CO_EVENT_LED_T, CO_EVENT_CAN_STATE_T, CORE_EVENT_CAN_STATE_T, CO_EVENT_CFG_MANAGER_T,
    CO_EVENT_FLYMA_T, CO_EVENT_SDO_CLIENT_READ_T, CO_EVENT_SDO_CLIENT_WRITE_T, CO_EVENT_EMCY_T,
    CO_EVENT_EMCY_CONS_T, CO_EVENT_EMCY_CONSUMER_T, CO_EVENT_TIME_T, CO_EVENT_LSS_T, CO_EVENT_LSS_MASTER_T,
    CO_EVENT_COMM_T, CORE_EVENT_COMM_T, CO_EVENT_MANAGER_BOOTUP_T, CO_EVENT_MPDO_T, CO_EVENT_USDO_SERVER_T,
    CO_EVENT_USDO_SERVER_FINISHED_T, CO_EVENT_USDO_SERVER_CHECK_WRITE_T, CO_EVENT_USDO_SERVER_DOMAIN_READ_T,
    CO_EVENT_USDO_SERVER_DOMAIN_WRITE_T, CO_EVENT_USDO_CLIENT_READ_T, CO_EVENT_USDO_CLIENT_WRITE_T,
    CO_EVENT_USDO_CLIENT_T, CO_EVENT_USDO_CLIENT_DOMAIN_TRANSFER_T;
void testIndication(void);

/* Parameters of the indication functions that gen_indication.h declares. */
typedef enum { CO_NMT_STATE_PREOP, CO_NMT_STATE_OPERATIONAL, CO_NMT_STATE_STOPPED } CO_NMT_STATE_T;
typedef enum { CO_ERRCTRL_BOOTUP, CO_ERRCTRL_NEW_STATE, CO_ERRCTRL_HB_FAILED } CO_ERRCTRL_T;
typedef enum { CO_CAN_STATE_BUS_OFF, CO_CAN_STATE_BUS_ON, CO_CAN_STATE_PASSIVE } CO_CAN_STATE_T;
typedef enum { CO_CFG_TRANSFER_ERROR, CO_CFG_TRANSFER_FINISHED } CO_CFG_TRANSFER_T;
typedef enum { CO_FLYMA_STATE_ACTIVE, CO_FLYMA_STATE_PASSIVE } CO_FLYMA_STATE_T;
typedef struct { UNSIGNED32 msec; UNSIGNED16 days; } CO_TIME_T;
typedef enum { CO_LSS_SERVICE_STORE, CO_LSS_SERVICE_NEW_BITRATE, CO_LSS_SERVICE_NEW_NODEID } CO_LSS_SERVICE_T;
typedef enum { CO_LSS_MASTER_SERVICE_SWITCH, CO_LSS_MASTER_SERVICE_INQUIRE } CO_LSS_MASTER_SERVICE_T;
typedef enum { CO_COMM_STATE_EVENT_BUS_OFF, CO_COMM_STATE_EVENT_BUS_ON } CO_COMM_STATE_EVENT_T;
typedef enum { CO_MANAGER_EVENT_BOOTUP, CO_MANAGER_EVENT_FAILED } CO_MANAGER_EVENT_T;
#ifndef CO_CONST
#define CO_CONST const
#endif
#ifndef CORE_CONST
#define CORE_CONST const
#endif
typedef CO_CAN_STATE_T CORE_CAN_STATE_T;
typedef CO_COMM_STATE_EVENT_T CORE_COMM_STATE_EVENT_T;
typedef enum { CO_NMT_SERVICE_STATE_CHANGE, CO_NMT_SERVICE_RESET } CO_EVENT_NMT_SERVICE_T;
/* The V4 stack passes records; their fields don't matter to the declarations. */
typedef struct { UNSIGNED8 line; UNSIGNED8 node; } TEST_EVENT_PARA_T;
typedef TEST_EVENT_PARA_T CO_EVENT_ERRCTRL_PARA_T, CO_EVENT_EMCY_CONSUMER_PARA_T, CO_EVENT_SDO_CLIENT_PARA_T,
    CO_EVENT_FLYING_MASTER_PARA_T, CO_EVENT_MPDO_PARA_T, CO_EVENT_EMCY_PRODUCER_PARA_T, CO_EVENT_LSS_MASTER_PARA_T,
    CO_EVENT_USDO_CLIENT_PARA_T, CO_EVENT_USDO_CLIENT_DOMAIN_PARA_T, CO_EVENT_USDO_SERVER_DOMAIN_PARA_T,
    CO_EVENT_CFG_PARA_T;
typedef enum { UDS_REQ_AUTHENT_DEAUTHENTICATE, UDS_REQ_AUTHENT_VERIFY } UDS_REQ_AUTHENT_CMD_T;
typedef enum { UDS_REQ_COMMGT_ENABLE, UDS_REQ_COMMGT_DISABLE } UDS_REQ_COMMGT_STATE_T;
typedef TEST_EVENT_PARA_T UDS_REQ_AUTHENT_PARA_T, UDS_CHECK_REQUIRED_SESSION_PARA_T, UDS_CLEAR_DTC_INFO_PARA_T,
    UDS_DATA_TRANSFER_PARA_T, UDS_DTC_INFO_PARA_T, UDS_GENERIC_PARA_T, UDS_DATA_TRANSMIT_PARA_T,
    UDS_ROUTINE_IOCTRL_PARA_T, UDS_MEM_DATA_TRANSMIT_PARA_T, UDS_REQ_COMMGT_PARA_T, UDS_EVENT_ROUTINE_CTRL_PARA_T,
    UDS_SECURITY_ACCESS_REQ_KEY_PARA_T;

/* The SRDO module of gen_srdo.c. */
typedef struct {
    const UNSIGNED32 *pMapTable;
    UNSIGNED8 dataValid;
} CO_SRDO_DATA_T;
#define CO_SRDO_DATA_UNKNOWN 0u
#define CO_SRDO_DATA_VALID 1u
typedef struct { UNSIGNED16 ticks; } CO_SRDO_TIMER_T;
typedef struct {
    UNSIGNED16 index;
    UNSIGNED8 subIndex;
    void *pVar;
} SRDO_OD_ENTRY_T;

#endif /* TEST_STACK_H */
