#include "PpsReading.hpp"

#include <oz/PpsObject.hpp>

namespace oz::device {

Q_LOGGING_CATEGORY(logDevice, "oz.device")

void LogText::warn(const PpsObject &pps) const
{
    switch (detail) {
    case Nothing:
        qCWarning(logDevice) << text;
        break;
    case ErrorCode:
        qCWarning(logDevice) << text << pps.error() << ".";
        break;
    case ErrorString:
        qCWarning(logDevice) << text << pps.errorString();
        break;
    case ErrorStringInBrackets:
        qCWarning(logDevice) << text << pps.errorString() << ")";
        break;
    case ErrorStringJoined:
        qCWarning(logDevice) << QString(QLatin1String(text) + pps.errorString() + u')');
        break;
    }
}

bool openOrLog(PpsObject *pps, PpsOpenMode::Type mode, const LogText &openFailed)
{
    if (pps->open(mode))
        return true;
    openFailed.warn(*pps);
    return false;
}

std::optional<QVariantMap> readOrLog(PpsObject *pps, const ReadTexts &texts)
{
    bool ok = false;
    const QByteArray data = pps->read(&ok);
    if (!ok) {
        texts.readFailed.warn(*pps);
        return std::nullopt;
    }
    QVariantMap message = PpsObject::decode(data, &ok);
    if (!ok) {
        texts.decodeFailed.warn(*pps);
        return std::nullopt;
    }
    return message;
}

QVariantMap attributesOf(const QVariantMap &message, const QString &key)
{
    return message.value(key).toMap();
}

QVariantMap attributesOf(const QVariantMap &message)
{
    return message.isEmpty() ? QVariantMap() : message.first().toMap();
}

QVariantMap attributesOrLog(PpsObject *pps, const ReadTexts &texts)
{
    if (!pps || !pps->isOpen())
        return {};
    const auto message = readOrLog(pps, texts);
    return message ? attributesOf(*message) : QVariantMap();
}

QVariant memberOf(const QVariantMap &attributes, const QString &attribute, const QString &member)
{
    return attributes.value(attribute).toMap().value(member);
}

QString textIn(const QVariantMap &map, const char *name)
{
    return map.value(QLatin1String(name)).toString();
}

} // namespace oz::device
