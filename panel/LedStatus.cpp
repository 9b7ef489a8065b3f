#include "LedStatus.hpp"

LedStatus::LedStatus(QObject *parent)
    : QObject(parent), m_statusObject(QStringLiteral("/pps/services/led/status"),
                           [this](const QVariantMap &lit) { updateColor(lit); }),
      m_activityObject(QStringLiteral("/pps/services/led/activity"),
          [this](const QVariantMap &activity) {
              m_activity = activity;
              Q_EMIT requestsChanged();
          }),
      m_color(Qt::transparent)
{
}

QString LedStatus::colorName() const
{
    constexpr const char *names[] = {"", "red", "green", "yellow", "blue", "magenta", "cyan", "white"};
    const int lit = (m_color.red() ? 1 : 0) + (m_color.green() ? 2 : 0) + (m_color.blue() ? 4 : 0);
    return QString::fromLatin1(names[m_color.alpha() ? lit : 0]);
}

void LedStatus::updateColor(const QVariantMap &lit)
{
    const auto element = [&](const QString &name) {
        const QVariant value = lit.value(name);
        return value.toBool() && value != QStringLiteral("off") ? 255 : 0;
    };
    const QColor shown(
        element(QStringLiteral("red")), element(QStringLiteral("green")), element(QStringLiteral("blue")));
    m_color = shown == QColor(Qt::black) ? QColor(Qt::transparent) : shown;
    Q_EMIT colorChanged();
}
