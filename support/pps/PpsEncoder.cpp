#include <oz/PpsText.hpp>

#include "pps/PpsTextParts.hpp"

#include <QVariantList>

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <charconv>
#include <cmath>

namespace oz::PpsText {

namespace {

// Each function returns false with the error set where the value has no form.
using JsonWriter = rapidjson::Writer<rapidjson::StringBuffer, rapidjson::UTF16<char16_t>>;

bool refuseValue(const char *what, QString *error)
{
    *error = QLatin1String(what);
    return false;
}

bool integerOf(const QVariant &value, qint64 *number)
{
    switch (value.typeId()) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::Char:
    case QMetaType::SChar:
    case QMetaType::UChar:
        *number = value.toLongLong();
        return true;
    default:
        return false;
    }
}

bool writeText(JsonWriter *writer, const QString &text, QString *error)
{
    const auto *utf16 = reinterpret_cast<const char16_t *>(text.utf16());
    return writer->String(utf16, rapidjson::SizeType(text.size()))
        || refuseValue("text that is no valid UTF-16", error);
}

bool writeJson(JsonWriter *writer, const QVariant &value, int depth, QString *error)
{
    const auto tooDeep = [&] { return depth > MaxDepth && !refuseValue("nesting deeper than 64", error); };
    if (qint64 number; integerOf(value, &number))
        return writer->Int64(number);
    switch (value.typeId()) {
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return writer->Uint64(value.toULongLong());
    case QMetaType::Float:
    case QMetaType::Double:
        return writer->Double(value.toDouble()) || refuseValue("a number that is not finite", error);
    case QMetaType::Bool:
        return writer->Bool(value.toBool());
    case QMetaType::QString:
        return writeText(writer, value.toString(), error);
    case QMetaType::Nullptr:
        return writer->Null();
    case QMetaType::QStringList:
    case QMetaType::QVariantList: {
        if (tooDeep())
            return false;
        writer->StartArray();
        for (const QVariant &element : value.toList()) {
            if (!writeJson(writer, element, depth + 1, error))
                return false;
        }
        return writer->EndArray();
    }
    case QMetaType::QVariantMap: {
        if (tooDeep())
            return false;
        writer->StartObject();
        const QVariantMap map = value.toMap();
        for (auto entry = map.cbegin(); entry != map.cend(); ++entry) {
            if (!writeText(writer, entry.key(), error) || !writeJson(writer, *entry, depth + 1, error))
                return false;
        }
        return writer->EndObject();
    }
    case QMetaType::QByteArray:
        return refuseValue("bytes inside a list or a map", error);
    default:
        *error = QLatin1String("a value of type ")
            + QLatin1String(value.isValid() ? value.typeName() : "QVariant (invalid) inside a list or a map");
        return false;
    }
}

bool isControl(char byte)
{
    return (byte >= 0 && byte < 0x20 && byte != '\t') || byte == 0x7f;
}

// Text goes as it stands unless it holds a control character, which would end the line or confuse a terminal.
void appendText(QByteArray *out, const QByteArray &utf8)
{
    if (std::none_of(utf8.begin(), utf8.end(), isControl)) {
        out->append(':').append(utf8);
        return;
    }
    out->append("c:");
    for (const char byte : utf8) {
        switch (byte) {
        case '\n':
            out->append("\\n");
            break;
        case '\r':
            out->append("\\r");
            break;
        case '\t':
            out->append("\\t");
            break;
        case '\\':
            out->append("\\\\");
            break;
        default:
            if (isControl(byte))
                out->append("\\x").append(HexDigits[byte >> 4]).append(HexDigits[byte & 15]);
            else
                out->append(byte);
        }
    }
}

QByteArray shortestDouble(double number)
{
    char buffer[32];
    const auto [end, problem] = std::to_chars(buffer, buffer + sizeof buffer, number);
    Q_ASSERT(problem == std::errc());
    QByteArray text(buffer, end - buffer);
    // "2" would come back as an int.
    if (!text.contains('.') && !text.contains('e'))
        text.append(".0");
    return text;
}

} // namespace

bool appendValue(QByteArray *out, const QVariant &value, QString *error)
{
    if (qint64 number; integerOf(value, &number)) {
        out->append("n:").append(QByteArray::number(number));
        return true;
    }
    switch (value.typeId()) {
    case QMetaType::QString: {
        const QString text = value.toString();
        if (!text.isValidUtf16())
            return refuseValue("text that is no valid UTF-16", error);
        appendText(out, text.toUtf8());
        return true;
    }
    case QMetaType::Bool:
        out->append(value.toBool() ? "b:true" : "b:false");
        return true;
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        out->append("n:").append(QByteArray::number(value.toULongLong()));
        return true;
    case QMetaType::Float:
    case QMetaType::Double:
        if (!std::isfinite(value.toDouble()))
            return refuseValue("a number that is not finite", error);
        out->append("n:").append(shortestDouble(value.toDouble()));
        return true;
    case QMetaType::QByteArray:
        out->append("b64:").append(value.toByteArray().toBase64());
        return true;
    default: {
        rapidjson::StringBuffer buffer;
        JsonWriter writer(buffer);
        if (!writeJson(&writer, value, 1, error))
            return false;
        out->append("json:").append(buffer.GetString(), qsizetype(buffer.GetSize()));
        return true;
    }
    }
}

namespace {

bool appendName(QByteArray *out, const QString &name, QString *error)
{
    if (name.isEmpty() || !name.isValidUtf16() || name.contains(u':') || name.contains(u'\n')
        || name.startsWith(u'@') || name.startsWith(u'-')) {
        return refuseValue(
            "a name that is empty, holds ':' or a line feed, or begins with '@' or '-'", error);
    }
    out->append(name.toUtf8());
    return true;
}

bool appendAttribute(QByteArray *out, const QString &name, const QVariant &value, QString *error)
{
    if (!value.isValid()) {
        out->append('-');
        if (!appendName(out, name, error))
            return false;
    } else {
        if (!appendName(out, name, error))
            return false;
        out->append(':');
        if (!appendValue(out, value, error))
            return false;
    }
    out->append('\n');
    return true;
}

QByteArray encodeOnto(QByteArray out, const QVariantMap &attributes, QString *error)
{
    for (auto entry = attributes.cbegin(); entry != attributes.cend(); ++entry) {
        QString reason;
        if (!appendAttribute(&out, entry.key(), *entry, &reason)) {
            *error =
                QLatin1String("attribute '") + entry.key() + QLatin1String("' cannot be encoded: ") + reason;
            return {};
        }
    }
    if (out.size() > MaxMessageSize) {
        *error = sizeError(out.size());
        return {};
    }
    return out;
}

} // namespace

QByteArray encode(const QVariantMap &attributes, QString *error)
{
    ErrorText problem(error);
    return encodeOnto({}, attributes, &problem);
}

QByteArray encodeObject(const QString &objectName, const QVariantMap &attributes, QString *error)
{
    ErrorText problem(error);
    if (objectName.isEmpty() || objectName.contains(u'\n') || !objectName.isValidUtf16()) {
        *problem = QLatin1String("'") + objectName + QLatin1String("' is no name of an object");
        return {};
    }
    return encodeOnto('@' + objectName.toUtf8() + '\n', attributes, &problem);
}

} // namespace oz::PpsText
