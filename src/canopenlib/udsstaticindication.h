#pragma once

#include <algorithm>
#include <array>
#include <cstring>

namespace UDS {

// A UDS service whose indication the V4 stack can call directly, without a
// registration at run time. The project names the application's function in
// `key`; gen_define.h binds it through `macro`, which also guards the
// service's prototype in gen_indication.h and its pointer `pointerName` of
// type `pointerType` in the start-up code. Services that answer with a
// negative response code of ISO 14229 return that code as UNSIGNED8.
struct StaticIndication
{
    const char* key;
    const char* macro;
    const char* pointerType;
    const char* pointerName;
    const char* returnWord;
    const char* parameters;
};

// In the order of the start-up code's pointer table and of the check.
inline constexpr StaticIndication staticIndications[] = {
    {"uds_fct_check_req_session", "UDS_EVENT_STATIC_CHECK_REQ_SESSION",
     "UDS_EVENT_CHECK_REQUIRED_SESSION_TYPE_T", "udsCheckRequiredSessionInd", "UNSIGNED8 ",
     "UDS_CHECK_REQUIRED_SESSION_PARA_T *pPara);\n"},
    {"uds_fct_clear_dtc_info", "UDS_EVENT_STATIC_CLEAR_DTC_INFO", "UDS_EVENT_CLEAR_DTC_INFO_FCT_T",
     "udsClearDtcInfoInd", "RET_T ", "UDS_CLEAR_DTC_INFO_PARA_T *pPara);\n"},
    {"uds_fct_dtc_info", "UDS_EVENT_STATIC_DTC_INFO", "UDS_EVENT_DTC_INFO_FCT_T", "udsReadDtcInfoInd",
     "RET_T ", "UDS_DTC_INFO_PARA_T *pPara);\n"},
    {"uds_fct_id_data_transmit", "UDS_EVENT_STATIC_ID_DATA_TRANSMIT", "UDS_EVENT_DATA_TRANSMIT_T",
     "udsDataTransmitInd", "RET_T ", "UDS_DATA_TRANSMIT_PARA_T *pPara);\n"},
    {"uds_fct_mem_data_transmit", "UDS_EVENT_STATIC_MEM_DATA_TRANSMIT", "UDS_EVENT_MEM_DATA_TRANSMIT_T",
     "udsMemDataTransmitInd", "RET_T ", "UDS_MEM_DATA_TRANSMIT_PARA_T *pPara);\n"},
    {"uds_fct_sec_access_req_key", "UDS_EVENT_STATIC_SEC_ACCESS_REQ_KEY",
     "UDS_EVENT_SECURITY_ACCESS_REQ_KEY_T", "udsEventSecurityAccessReqKeyInd", "RET_T ",
     "UDS_SECURITY_ACCESS_REQ_KEY_PARA_T *pPara);\n"},
    {"uds_fct_req_commgt", "UDS_EVENT_STATIC_REQ_COMMGT", "UDS_EVENT_REQ_COMMGT_T", "udsReqCommgtInd",
     "UNSIGNED8 ", "UDS_REQ_COMMGT_STATE_T state, UDS_REQ_COMMGT_PARA_T *pPara);\n"},
    {"uds_fct_authent_req", "UDS_EVENT_STATIC_AUTHENT_REQ", "UDS_EVENT_AUTHENTICATION_REQ_T", "udsAuthReqInd",
     "RET_T ", "UDS_REQ_AUTHENT_CMD_T cmd, UDS_REQ_AUTHENT_PARA_T *pPara);\n"},
    {"uds_fct_ioctrl", "UDS_EVENT_STATIC_IOCTRL", "UDS_EVENT_ROUTINE_IOCTRL_T", "udsIoCtrlInd", "UNSIGNED8 ",
     "UDS_ROUTINE_IOCTRL_PARA_T *pPara);\n"},
    {"uds_fct_routine_ctrl", "UDS_EVENT_STATIC_ROUTINE_CTRL", "UDS_EVENT_ROUTINE_CTRL_T", "udsRoutineCtrlInd",
     "UNSIGNED8 ", "UDS_EVENT_ROUTINE_CTRL_PARA_T *pPara);\n"},
    {"uds_fct_data_transfer", "UDS_EVENT_STATIC_DATA_TRANSFER", "UDS_EVENT_DATA_TRANSFER_T",
     "udsEventDataTransferInd", "RET_T ", "UDS_DATA_TRANSFER_PARA_T *pPara);\n"},
    {"uds_fct_generic", "UDS_EVENT_STATIC_GENERIC_FCT", "UDS_EVENT_GENERIC_FCT_T", "udsGenericInd", "RET_T ",
     "UDS_GENERIC_PARA_T *pPara);\n"},
};

using StaticIndicationList = std::array<const StaticIndication*, std::size(staticIndications)>;

// gen_define.h and gen_indication.h list the services by their setting.
inline StaticIndicationList staticIndicationsBySetting()
{
    StaticIndicationList rows;
    for (std::size_t i = 0; i < rows.size(); ++i)
        rows[i] = &staticIndications[i];
    std::sort(rows.begin(), rows.end(), [](const StaticIndication* a, const StaticIndication* b) {
        return std::strcmp(a->key, b->key) < 0;
    });
    return rows;
}

} // namespace UDS
