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

RET_T udsStackInit_common(const UDS_SERVICE_INIT_VAL_T *pServices);
RET_T udsStackInit_line(TEST_LINE_ARG const UDS_CONFIG_INIT_VAL_T *pLine);

#endif /* TEST_UDS_H */
