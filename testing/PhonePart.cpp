#include <oz/testing/PhonePart.hpp>

#include "PhoneLink.hpp"

#include <QLocale>
#include <QMetaEnum>

namespace oz::testing {

using namespace device;

PhonePart::PhonePart(PhoneLink &link, const QString &name, const QString &instance)
    : m_link(&link), m_name(name), m_instance(instance)
{
}

void PhonePart::tell(const char *verb, const QStringList &arguments)
{
    QStringList words{m_name};
    if (!m_instance.isEmpty())
        words.append(m_instance);
    words.append(QLatin1String(verb));
    for (const QString &argument : arguments) {
        if (!argument.isNull())
            words.append(argument);
    }
    m_link->tell(words);
}

QVariant PhonePart::value(const char *name) const
{
    QStringList words{m_name};
    if (!m_instance.isEmpty())
        words.append(m_instance);
    words.append(QLatin1String(name));
    return m_link->value(words.join(u'.'));
}

QString PhonePart::word(bool value)
{
    return value ? QStringLiteral("on") : QStringLiteral("off");
}

QString PhonePart::word(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString PhonePart::word(std::optional<double> value)
{
    return value ? word(*value) : QStringLiteral("unknown");
}

QString PhonePart::word(const QString &value)
{
    return value.isNull() ? QStringLiteral("") : value;
}

QString PhonePart::word(const QStringList &values)
{
    return word(values.join(u','));
}

QString PhonePart::word(std::chrono::milliseconds time)
{
    return QString::number(double(time.count()) / 1000, 'f', 3);
}

QString PhonePart::optionalWord(const QString &value)
{
    return value.isEmpty() ? QString() : value;
}

QString PhonePart::optionalWord(const QStringList &values)
{
    return optionalWord(values.join(u','));
}

CellularConnectionState::Type DataProfilePart::connection() const
{
    const QString word = value("connection").toString();
    return word == u"connected" ? CellularConnectionState::Connected
        : word == u"connecting" ? CellularConnectionState::PendingConnect
                                : CellularConnectionState::Disconnected;
}

LedColor::Type LedPart::colorOf(const char *name) const
{
    QByteArray key = value(name).toByteArray(); // "red"
    key = key.left(1).toUpper() + key.mid(1);
    bool isColor = false;
    const int color = QMetaEnum::fromType<LedColor::Type>().keyToValue(key, &isColor);
    return isColor ? LedColor::Type(color) : LedColor::None;
}

VibrationPart::Run VibrationPart::last() const
{
    const auto time = [this](
                          const char *name) { return std::chrono::milliseconds(value(name).toLongLong()); };
    return {time("last-duration"), time("last-ran"), value("last-intensity").toInt(),
        value("last-end").toString()};
}

} // namespace oz::testing
