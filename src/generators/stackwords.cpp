#include "generators/stackwords.h"

#include <QMutexLocker>
#include <QRegularExpression>

const StackWords& StackWords::genDefine()
{
    // The defines that moved from the CANopen layer into the core layer.
    static const StackWords words(
        {
            {"CO_MULTI_LINE", "CAN_MULTI_LINE"},
            {"CO_MULTI_LINE_CNT", "CAN_MULTI_LINE_CNT"},
            {"CO_BIG_ENDIAN", "CORE_BIG_ENDIAN"},
            {"CO_CANFD_SUPPORTED", "CORE_CANFD_SUPPORTED"},
            {"CO_COB_CNT", "CORE_COB_CNT"},
            {"CO_COB_COUNTS", "CORE_COB_COUNTS"},
            {"CO_COB_SORTED_LIST", "CORE_COB_SORTED_LIST"},
            {"CO_CONFIG_REC_BUFFER_CNT", "CORE_CONFIG_REC_BUFFER_CNT"},
            {"CO_CONFIG_TRANS_BUFFER_CNT", "CORE_CONFIG_TRANS_BUFFER_CNT"},
            {"CO_DRV_FILTER", "CORE_DRV_FILTER"},
            {"CO_DRV_GROUP_FILTER", "CORE_DRV_GROUP_FILTER"},
            {"CO_EVENT_DYNAMIC_CAN", "CORE_EVENT_DYNAMIC_CAN"},
            {"CO_EVENT_STATIC_CAN", "CORE_EVENT_STATIC_CAN"},
            {"CO_INHIBIT_SUPPORTED", "CORE_INHIBIT_SUPPORTED"},
            {"CO_REC_BUFFER_CNT", "CORE_REC_BUFFER_CNT"},
            {"CO_REC_BUFFER_COUNTS", "CORE_REC_BUFFER_COUNTS"},
            {"CO_TR_BUFFER_CNT", "CORE_TR_BUFFER_CNT"},
            {"CO_TR_BUFFER_COUNTS", "CORE_TR_BUFFER_COUNTS"},
            {"CO_TIMER_INTERVAL", "CORE_TIMER_INTERVAL"},
            {"CO_USER_EXTENSION_SUPPORTED", "CORE_USER_EXTENSION_SUPPORTED"},
        },
        {});
    return words;
}

const StackWords& StackWords::genObjdict()
{
    static const StackWords words(
        {
            {"CO_CONST", "CORE_CONST"},
            {"CO_STORAGE_CLASS", "CORE_STORAGE_CLASS"},
            {"CO_CONST_STORAGE_CLASS", "CORE_CONST_STORAGE_CLASS"},
            {"CO_HANDLE_WATCHDOG", "CORE_HANDLE_WATCHDOG"},
            {"CO_LINE", "CAN_LINE"},
            {"CO_LINE_TYPE", "CAN_LINE_TYPE"},
            {"CO_MULTI_LINE_CNT", "CAN_MULTI_LINE_CNT"},
            {"RET_INVALID_PARAMETER", "RET_PARAMETER_INVALID"},
            {"commonStackInit", "coreStackInit"},
        },
        {{"<iso_tp.h>", "<core_isotp.h>"}});
    return words;
}

// The declarations and calls that the CANopen, J1939 and raw CAN init code
// share: the common layer of the classic stack is the core layer of the V4
// stack, which also takes its const qualifier from a define.
const StackWords& StackWords::commonInit()
{
    static const StackWords words(
        {
            {"const", "CORE_CONST"},
            {"CO_COMMON_INIT_VAL_T", "CORE_COMMON_INIT_VAL_T"},
            {"CO_REC_BUFFER_COUNTS", "CORE_REC_BUFFER_COUNTS"},
            {"CO_TR_BUFFER_COUNTS", "CORE_TR_BUFFER_COUNTS"},
            {"CO_COB_COUNTS", "CORE_COB_COUNTS"},
            {"MP_PROT_TYPE_CANOPEN", "CORE_PROT_TYPE_CANOPEN"},
            {"MP_PROT_TYPE_J1939", "CORE_PROT_TYPE_J1939"},
            {"MP_PROT_TYPE_RAWCAN", "CORE_PROT_TYPE_RAWCAN"},
            {"MP_PROT_TYPE_UDS", "CORE_PROT_TYPE_UDS"},
            {"MP_PROT_TYPE_UNKNOWN", "CORE_PROT_TYPE_UNKNOWN"},
        },
        {});
    return words;
}

const StackWords& StackWords::genVobjdict()
{
    static const StackWords words(
        {
            {"CO_CONST", "CORE_CONST"},
            {"CO_CONST_STORAGE_CLASS", "CORE_CONST_STORAGE_CLASS"},
        },
        {});
    return words;
}

const StackWords& StackWords::genPgn()
{
    static const StackWords words(
        {
            {"CO_CONST", "CORE_CONST"},
            {"CO_HANDLE_WATCHDOG", "CORE_HANDLE_WATCHDOG"},
            {"CO_MULTI_LINE_CNT", "CAN_MULTI_LINE_CNT"},
            {"commonStackInit", "coreStackInit"},
            {"J1939_RECEIVE_PGN_CNT", "J1939_RECEIVE_PGN_CFG_CNT"},
        },
        {{"<iso_tp.h>", "<core_isotp.h>"}});
    return words;
}

// gen_mp.c holds the sections of gen_objdict.c and names the protocol of
// each line after the core layer.
const StackWords& StackWords::genMp()
{
    static const StackWords words(genObjdict(),
                                  {
                                      {"RET_SERVICE_NOT_INITIALIZED", "RET_NOT_INITIALIZED"},
                                      {"MP_PROT_TYPE_CANOPEN", "CORE_PROT_TYPE_CANOPEN"},
                                      {"MP_PROT_TYPE_J1939", "CORE_PROT_TYPE_J1939"},
                                      {"MP_PROT_TYPE_RAWCAN", "CORE_PROT_TYPE_RAWCAN"},
                                      {"MP_PROTOCOL_TYPE_T", "CORE_PROTOCOL_TYPE_T"},
                                  },
                                  {{"<mp_mp.h>", "<core_common.h>"}});
    return words;
}

const StackWords& StackWords::genSdg()
{
    static const StackWords words(
        {
            {"CO_LINE", "CAN_LINE"},
            {"CO_LINE_TYPE", "CAN_LINE_TYPE"},
            {"CO_MULTI_LINE_CNT", "CAN_MULTI_LINE_CNT"},
            {"RET_INVALID_PARAMETER", "RET_PARAMETER_INVALID"},
        },
        {});
    return words;
}

StackWords::StackWords(std::initializer_list<Word> words, std::initializer_list<Word> pieces)
    : m_pieces(pieces)
{
    for (const Word& word : words)
        m_words.insert(QLatin1String(word.classic), QLatin1String(word.core));
}

StackWords::StackWords(const StackWords& base, std::initializer_list<Word> words,
                       std::initializer_list<Word> pieces)
    : m_words(base.m_words), m_pieces(base.m_pieces)
{
    m_pieces.append(pieces);
    for (const Word& word : words)
        m_words.insert(QLatin1String(word.classic), QLatin1String(word.core));
}

QString StackWords::coreSpelling(const char* literal) const
{
    QMutexLocker lock(&m_lock);
    if (const auto known = m_spelt.constFind(literal); known != m_spelt.constEnd())
        return known.value();
    static const QRegularExpression word(QStringLiteral("\\b[A-Za-z_][A-Za-z0-9_]*\\b"));
    const QString text = QString::fromLatin1(literal);
    QString result;
    qsizetype done = 0;
    QRegularExpressionMatchIterator it = word.globalMatch(text);
    while (it.hasNext()) {
        const QRegularExpressionMatch match = it.next();
        result += QStringView(text).mid(done, match.capturedStart() - done);
        result += m_words.value(match.captured(), match.captured());
        done = match.capturedEnd();
    }
    result += QStringView(text).mid(done);
    for (const Word& piece : m_pieces)
        result.replace(QLatin1String(piece.classic), QLatin1String(piece.core));
    m_spelt.insert(literal, result);
    return result;
}
