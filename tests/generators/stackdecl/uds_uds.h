/*
 * Declarations of the UDS server and client that the generated start-up
 * code refers to, written for the compile tests. A service's session or
 * security table row names the service, a sub-function and the allowed values.
 */
#ifndef TEST_UDS_H
#define TEST_UDS_H 1

#include "teststack.h"

enum { ISOTP_FORMAT_NORMAL, ISOTP_FORMAT_NORMAL_FIXED, ISOTP_FORMAT_EXTENDED };
enum { UDS_SUB_RESET_HR = 1, UDS_SUB_RESET_KOFFONR, UDS_SUB_RESET_SR, UDS_SUB_RESET_ERPSD, UDS_SUB_RESET_DRPSD };
enum { UDS_ROUTINE_CTRL_START = 1, UDS_ROUTINE_CTRL_STOP, UDS_ROUTINE_CTRL_REQ_RESULT };
enum { UDS_SUB_SESSION_DS = 1, UDS_SUB_SESSION_PRGS, UDS_SUB_SESSION_EXTDS, UDS_SUB_SESSION_SSDS,
       UDS_SUB_SESSION_MANU_40 = 0x40 };

#define TEST_UDS_VALUES 8
typedef struct {
    UNSIGNED8 sid;
    UNSIGNED8 subFunction;
    UNSIGNED8 sessions[TEST_UDS_VALUES];
    UNSIGNED8 sessionCnt;
} UDS_REQ_SESSION_TYPE_TABLE_T;
typedef struct {
    UNSIGNED8 sid;
    UNSIGNED8 subFunction;
    UNSIGNED8 levels[TEST_UDS_VALUES];
    UNSIGNED8 levelCnt;
} UDS_SECURITY_LEVEL_TABLE_T;
typedef struct {
    UNSIGNED8 sid;
} UDS_AUTHENT_TABLE_T;

typedef struct {
    UNSIGNED8 version;
    UNSIGNED8 clients[TEST_LINES];
} UDS_SERVICE_INIT_VAL_T;

typedef struct {
    UNSIGNED32 serverPhysAddrReqCanID;
    UNSIGNED32 serverPhysAddrRespCanID;
    UNSIGNED32 clientPhysAddrReqCanID;
    UNSIGNED32 clientPhysAddrRespCanID;
    UNSIGNED32 serverFuncAddrReqCanID;
    UNSIGNED32 clientFuncAddrCanID;
    UNSIGNED8 physReqExtAddr;
    UNSIGNED8 physRespExtAddr;
    UNSIGNED8 funcReqExtAddr;
    UNSIGNED8 clientExtAddr;
    UNSIGNED8 addressFormat;
    const UDS_REQ_SESSION_TYPE_TABLE_T *pSessionTable;
    UNSIGNED16 sessionTableCnt;
    const UDS_SECURITY_LEVEL_TABLE_T *pSecurityTable;
    UNSIGNED16 securityTableCnt;
    BOOL_T serverActive;
#ifdef TEST_STACK_V4
    const UDS_AUTHENT_TABLE_T *pAuthenticationTable;
    UNSIGNED16 authenticationTableCnt;
#endif
} UDS_CONFIG_INIT_VAL_T;

/* The CAN-IDs of a boot loader's own configuration. */
UNSIGNED32 CFG_UDS_REQ_ID(void);
UNSIGNED32 CFG_UDS_RES_ID(void);
UNSIGNED32 CFG_UDS_FUNC_ID(void);

/*
 * Statically bound indications: the function types of their pointers, which
 * must match the prototypes of gen_indication.h. gen_define.h binds a service
 * by naming the application's function in the service's macro, and the
 * generated code asks for the binding with "#if", where a bare function name
 * reads as 0. This stack turns every named binding into 1, so that the
 * guarded pointers and prototypes are compiled.
 */
typedef UNSIGNED8 (*UDS_EVENT_CHECK_REQUIRED_SESSION_TYPE_T)(UDS_CHECK_REQUIRED_SESSION_PARA_T *pPara);
typedef RET_T (*UDS_EVENT_CLEAR_DTC_INFO_FCT_T)(UDS_CLEAR_DTC_INFO_PARA_T *pPara);
typedef RET_T (*UDS_EVENT_DTC_INFO_FCT_T)(UDS_DTC_INFO_PARA_T *pPara);
typedef RET_T (*UDS_EVENT_DATA_TRANSMIT_T)(UDS_DATA_TRANSMIT_PARA_T *pPara);
typedef RET_T (*UDS_EVENT_MEM_DATA_TRANSMIT_T)(UDS_MEM_DATA_TRANSMIT_PARA_T *pPara);
typedef RET_T (*UDS_EVENT_SECURITY_ACCESS_REQ_KEY_T)(UDS_SECURITY_ACCESS_REQ_KEY_PARA_T *pPara);
typedef UNSIGNED8 (*UDS_EVENT_REQ_COMMGT_T)(UDS_REQ_COMMGT_STATE_T state, UDS_REQ_COMMGT_PARA_T *pPara);
typedef RET_T (*UDS_EVENT_AUTHENTICATION_REQ_T)(UDS_REQ_AUTHENT_CMD_T cmd, UDS_REQ_AUTHENT_PARA_T *pPara);
typedef UNSIGNED8 (*UDS_EVENT_ROUTINE_IOCTRL_T)(UDS_ROUTINE_IOCTRL_PARA_T *pPara);
typedef UNSIGNED8 (*UDS_EVENT_ROUTINE_CTRL_T)(UDS_EVENT_ROUTINE_CTRL_PARA_T *pPara);
typedef RET_T (*UDS_EVENT_DATA_TRANSFER_T)(UDS_DATA_TRANSFER_PARA_T *pPara);
typedef RET_T (*UDS_EVENT_GENERIC_FCT_T)(UDS_GENERIC_PARA_T *pPara);
#ifdef UDS_EVENT_STATIC_CHECK_REQ_SESSION
#undef UDS_EVENT_STATIC_CHECK_REQ_SESSION
#define UDS_EVENT_STATIC_CHECK_REQ_SESSION 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef UDS_EVENT_STATIC_CLEAR_DTC_INFO
#undef UDS_EVENT_STATIC_CLEAR_DTC_INFO
#define UDS_EVENT_STATIC_CLEAR_DTC_INFO 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef UDS_EVENT_STATIC_DTC_INFO
#undef UDS_EVENT_STATIC_DTC_INFO
#define UDS_EVENT_STATIC_DTC_INFO 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef UDS_EVENT_STATIC_ID_DATA_TRANSMIT
#undef UDS_EVENT_STATIC_ID_DATA_TRANSMIT
#define UDS_EVENT_STATIC_ID_DATA_TRANSMIT 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef UDS_EVENT_STATIC_MEM_DATA_TRANSMIT
#undef UDS_EVENT_STATIC_MEM_DATA_TRANSMIT
#define UDS_EVENT_STATIC_MEM_DATA_TRANSMIT 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef UDS_EVENT_STATIC_SEC_ACCESS_REQ_KEY
#undef UDS_EVENT_STATIC_SEC_ACCESS_REQ_KEY
#define UDS_EVENT_STATIC_SEC_ACCESS_REQ_KEY 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef UDS_EVENT_STATIC_REQ_COMMGT
#undef UDS_EVENT_STATIC_REQ_COMMGT
#define UDS_EVENT_STATIC_REQ_COMMGT 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef UDS_EVENT_STATIC_AUTHENT_REQ
#undef UDS_EVENT_STATIC_AUTHENT_REQ
#define UDS_EVENT_STATIC_AUTHENT_REQ 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef UDS_EVENT_STATIC_IOCTRL
#undef UDS_EVENT_STATIC_IOCTRL
#define UDS_EVENT_STATIC_IOCTRL 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef UDS_EVENT_STATIC_ROUTINE_CTRL
#undef UDS_EVENT_STATIC_ROUTINE_CTRL
#define UDS_EVENT_STATIC_ROUTINE_CTRL 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef UDS_EVENT_STATIC_DATA_TRANSFER
#undef UDS_EVENT_STATIC_DATA_TRANSFER
#define UDS_EVENT_STATIC_DATA_TRANSFER 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef UDS_EVENT_STATIC_GENERIC_FCT
#undef UDS_EVENT_STATIC_GENERIC_FCT
#define UDS_EVENT_STATIC_GENERIC_FCT 1
#define TEST_UDS_STATIC_BINDING 1
#endif
#ifdef TEST_UDS_STATIC_BINDING
#include <gen_indication.h>
#endif

RET_T udsStackInit_common(const UDS_SERVICE_INIT_VAL_T *pServices);
RET_T udsStackInit_line(TEST_LINE_ARG const UDS_CONFIG_INIT_VAL_T *pLine);

#endif /* TEST_UDS_H */
