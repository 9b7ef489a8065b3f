#include "Frame.hpp"

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

ControlAnswer exchange(const ControlRequest &request, const ControlTexts &texts)
{
    PpsObject control(request.path);
    if (request.setBlocking)
        control.setBlocking(true);
    if (!control.open(PpsOpenMode::PublishSubscribe)) {
        if (texts.openFailed)
            texts.openFailed->warn(control);
        return {ControlAnswer::NotOpened, control.error(), {}};
    }
    bool ok = false;
    const QByteArray data = PpsObject::encode(request.attributes, &ok);
    if (!ok) {
        texts.encodeFailed.warn(control);
        return {};
    }
    if (!control.write(data)) {
        texts.writeFailed.warn(control);
        return {};
    }
    const auto message = readOrLog(&control, texts.answer);
    if (!message)
        return {};
    return {ControlAnswer::Answered, 0, *message};
}

} // namespace oz::device
