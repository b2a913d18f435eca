// gen_sdg.c: the copying of a safe PGN's signals between its message and
// the application's variables, in the new mapping from any bit position and
// in the old one at fixed places.

#include "generators/multiprotocol/sdmgenerator.h"

#include "canopenlib/cohelper.h"

#include <algorithm>

namespace {

// A classical CAN frame: an SDG and its safety trailer fit in eight bytes.
constexpr int messageBytes = 8;
constexpr int messageBits = 8 * messageBytes;
// Shifts and masks are written for values up to the widest C word.
constexpr int widestValue = 32;

QString mask(quint32 value)
{
    return QStringLiteral("0x%1").arg(value, 2, 16, QLatin1Char('0'));
}

quint32 lowBits(int bits)
{
    return bits >= 32 ? 0xFFFFFFFFu : (quint32(1) << bits) - 1;
}

QString valueCast(int bits)
{
    if (bits <= 8)
        return QStringLiteral("(UNSIGNED8)");
    return bits <= 16 ? QStringLiteral("(UNSIGNED16)") : QStringLiteral("(UNSIGNED32)");
}

// The piece of a signal that lies in one byte of the message: `valueBit` is
// where it starts in the value, `shift` where in the byte.
struct Part
{
    int byte;
    int valueBit;
    int shift;
    int bits;
};

QList<Part> partsOf(const SDMGenerator::Signal& signal)
{
    QList<Part> parts;
    for (int done = 0; done < signal.bits;) {
        const int bit = signal.firstBit + done;
        const int shift = bit % 8;
        const int bits = std::min(8 - shift, signal.bits - done);
        parts << Part{bit / 8, done, shift, bits};
        done += bits;
    }
    return parts;
}

QString variableOf(const SDMGenerator::Signal& signal)
{
    return signal.variable + signal.subscript;
}

// The signals a mapping can express, in the order of the message; the others
// leave their "#error" line in `lines`, so that the generated file doesn't
// compile.
QList<SDMGenerator::Signal> expressible(QList<SDMGenerator::Signal> signalList, bool oldMapping,
                                        QStringList& lines)
{
    std::stable_sort(
        signalList.begin(), signalList.end(),
        [](const SDMGenerator::Signal& a, const SDMGenerator::Signal& b) { return a.firstBit < b.firstBit; });
    static const QList<int> oldSizes = {2, 3, 4, 8, 16, 32};
    QList<SDMGenerator::Signal> result;
    int nextFree = 0;
    for (const SDMGenerator::Signal& signal : std::as_const(signalList)) {
        const bool integer = COHelper::signedness(quint16(signal.dataType)) != CAN::NotInteger;
        if (!integer || signal.bits <= 0 || signal.bits > widestValue ||
            (oldMapping && !oldSizes.contains(signal.bits))) {
            lines << QStringLiteral("#error data type not supported.\n");
            continue;
        }
        const int shift = signal.firstBit % 8;
        const bool oldPlace = signal.bits < 8 ? shift + signal.bits <= 8 : shift == 0;
        if (signal.firstBit < nextFree || signal.firstBit + signal.bits > messageBits ||
            (oldMapping && !oldPlace)) {
            lines << QStringLiteral("#error SDM structure not supported\n");
            continue;
        }
        nextFree = signal.firstBit + signal.bits;
        result << signal;
    }
    return result;
}

// Behind the data: the unused upper bits of the last byte, and the bytes
// that hold no signal, are set, as J1939 marks what is not sent. The V4
// stack fills the bytes behind the data itself, up to the message length.
void writeTrailer(QStringList& lines, const QList<SDMGenerator::Signal>& placed, const QString& buffer,
                  bool core)
{
    int end = 0;
    QList<bool> holdsData(messageBytes, false);
    for (const SDMGenerator::Signal& signal : placed) {
        end = std::max(end, signal.firstBit + signal.bits);
        for (const Part& part : partsOf(signal))
            holdsData[part.byte] = true;
    }
    const int usedBytes = (end + 7) / 8;
    const int unused = usedBytes * 8 - end;
    if (unused > 0) {
        lines << QStringLiteral("        /* set %1 unused bits */\n").arg(unused);
        lines << QStringLiteral("        %1[%2] |= %3;\n")
                     .arg(buffer)
                     .arg(usedBytes - 1)
                     .arg(mask((0xFFu << (8 - unused)) & 0xFFu));
    }
    for (int byte = 0; byte < (core ? usedBytes : messageBytes); ++byte) {
        if (!holdsData[byte])
            lines << QStringLiteral("        %1[%2] = 0xff;\n").arg(buffer).arg(byte);
    }
    if (core)
        lines << QStringLiteral("        pgLen = %1;\n").arg(usedBytes);
}

void packOld(QStringList& lines, const SDMGenerator::Signal& signal, const QString& buffer, int& enteredByte)
{
    const QString variable = variableOf(signal);
    const int byte = signal.firstBit / 8;
    if (signal.bits < 8) {
        if (enteredByte != byte)
            lines << QStringLiteral("        %1[%2] = 0x00u;\n").arg(buffer).arg(byte);
        enteredByte = byte;
        lines << QStringLiteral("        %1[%2] |= (%3 & %4u) << %5u;\n")
                     .arg(buffer)
                     .arg(byte)
                     .arg(variable, mask(lowBits(signal.bits)))
                     .arg(signal.firstBit % 8);
        return;
    }
    lines
        << QStringLiteral("        %1[%2] = (UNSIGNED8)(%3 & 0xffu);\n").arg(buffer).arg(byte).arg(variable);
    for (int shift = 8; shift < signal.bits; shift += 8)
        lines << QStringLiteral("        %1[%2] = (UNSIGNED8)((%3 >> %4) & 0xffu);\n")
                     .arg(buffer)
                     .arg(byte + shift / 8)
                     .arg(variable)
                     .arg(shift);
    enteredByte = byte + signal.bits / 8 - 1;
}

void unpackOld(QStringList& lines, const SDMGenerator::Signal& signal)
{
    const QString variable = variableOf(signal);
    const int byte = signal.firstBit / 8;
    if (signal.bits < 8) {
        lines << QStringLiteral("        %1 = (UNSIGNED8) ((pBuffer[%2] >> %3) & %4u);\n")
                     .arg(variable)
                     .arg(byte)
                     .arg(signal.firstBit % 8)
                     .arg(mask(lowBits(signal.bits)));
        return;
    }
    const QString cast = valueCast(signal.bits);
    lines << QStringLiteral("        %1 = %2pBuffer[%3];\n").arg(variable, cast).arg(byte);
    for (int shift = 8; shift < signal.bits; shift += 8)
        lines << QStringLiteral("        %1 |= %2(pBuffer[%3]) << %4;\n")
                     .arg(variable, cast)
                     .arg(byte + shift / 8)
                     .arg(shift);
}

} // namespace

QStringList SDMGenerator::packing(const QList<Signal>& signalList, const QString& buffer, bool oldMapping,
                                  bool core)
{
    QStringList lines;
    const QList<Signal> placed = expressible(signalList, oldMapping, lines);
    if (oldMapping) {
        int enteredByte = -1;
        for (const Signal& signal : placed)
            packOld(lines, signal, buffer, enteredByte);
        writeTrailer(lines, placed, buffer, core);
        return lines;
    }
    QList<QPair<Signal, Part>> byByte[messageBytes];
    for (const Signal& signal : placed) {
        for (const Part& part : partsOf(signal))
            byByte[part.byte] << qMakePair(signal, part);
    }
    for (int byte = 0; byte < messageBytes; ++byte) {
        const auto& parts = byByte[byte];
        if (parts.isEmpty())
            continue;
        if (parts.size() == 1 && parts.first().first.bits == 8) {
            lines << QStringLiteral("        %1[%2] = %3;\n")
                         .arg(buffer)
                         .arg(byte)
                         .arg(variableOf(parts.first().first));
            continue;
        }
        lines << QStringLiteral("        %1[%2] = 0x00u;\n").arg(buffer).arg(byte);
        for (const auto& [signal, part] : parts) {
            const QString variable = variableOf(signal);
            const QString bits = mask(lowBits(part.bits) << part.valueBit);
            if (part.valueBit == part.shift)
                lines << QStringLiteral("        %1[%2] |= (UNSIGNED8)(%3 & %4u);\n")
                             .arg(buffer)
                             .arg(byte)
                             .arg(variable, bits);
            else if (part.valueBit == 0)
                lines << QStringLiteral("        %1[%2] |= (UNSIGNED8)((%3 & %4u) << %5u);\n")
                             .arg(buffer)
                             .arg(byte)
                             .arg(variable, bits)
                             .arg(part.shift);
            else
                lines << QStringLiteral("        %1[%2] |= (UNSIGNED8)((%3 & %4u) %5 %6u);\n")
                             .arg(buffer)
                             .arg(byte)
                             .arg(variable, bits)
                             .arg(part.valueBit > part.shift ? QStringLiteral(">>") : QStringLiteral("<<"))
                             .arg(std::abs(part.valueBit - part.shift));
        }
    }
    writeTrailer(lines, placed, buffer, core);
    return lines;
}

QStringList SDMGenerator::unpacking(const QList<Signal>& signalList, bool oldMapping)
{
    QStringList lines;
    const QList<Signal> placed = expressible(signalList, oldMapping, lines);
    for (const Signal& signal : placed) {
        if (oldMapping) {
            unpackOld(lines, signal);
            continue;
        }
        const QString variable = variableOf(signal);
        const QList<Part> parts = partsOf(signal);
        if (parts.size() == 1) {
            const Part& part = parts.first();
            if (part.bits == 8)
                lines << QStringLiteral("        %2 = pBuffer[%1];\n").arg(part.byte).arg(variable);
            else if (part.shift == 0)
                lines << QStringLiteral("        %2 = pBuffer[%1] & %3u;\n")
                             .arg(part.byte)
                             .arg(variable, mask(lowBits(part.bits)));
            else
                lines << QStringLiteral("        %2 = (pBuffer[%1] >> %4) & %3u;\n")
                             .arg(part.byte)
                             .arg(variable, mask(lowBits(part.bits)))
                             .arg(part.shift);
            continue;
        }
        const QString cast = valueCast(signal.bits);
        lines << QStringLiteral("        %1 = 0x00u;\n").arg(variable);
        for (const Part& part : parts) {
            if (part.bits == 8 && part.valueBit == 0)
                lines << QStringLiteral("        %1 |= (%3pBuffer[%2]);\n")
                             .arg(variable)
                             .arg(part.byte)
                             .arg(cast);
            else if (part.bits == 8)
                lines << QStringLiteral("        %1 |= (%4pBuffer[%2] << %3u);\n")
                             .arg(variable)
                             .arg(part.byte)
                             .arg(part.valueBit)
                             .arg(cast);
            else
                lines << QStringLiteral("        %2 |= (%6pBuffer[%1] %4 %5u) & %3u;\n")
                             .arg(part.byte)
                             .arg(variable, mask(lowBits(part.bits) << part.valueBit))
                             .arg(part.valueBit == 0 ? QStringLiteral(">>") : QStringLiteral("<<"))
                             .arg(part.valueBit == 0 ? part.shift : part.valueBit)
                             .arg(cast);
        }
    }
    return lines;
}
