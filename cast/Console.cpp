#include "Console.hpp"

#include "ScreenWatch.hpp"

#include <oz/PrintableText.hpp>

#include <QEventLoop>

#include <cstdio>

namespace oz::cast {

namespace {

constexpr quint16 DefaultControlPort = 7250;

void print(const QString &text)
{
    std::printf("%s\n", qUtf8Printable(printableText(text)));
    std::fflush(stdout);
}

QString textOf(const QString &kind, const QJsonObject &content)
{
    if (kind != u"playing")
        return kind == u"step" ? content[QStringLiteral("text")].toString() : kind;
    const auto number = [&](const char *name) {
        return QString::number(content[QLatin1String(name)].toInt());
    };
    return QLatin1String("playing ") + number("width") + u'x' + number("height") + QLatin1String(" at ")
        + number("rate") + QLatin1String(" frames a second, ")
        + QLatin1String(content[QStringLiteral("audio")].toBool() ? "with sound" : "without sound");
}

} // namespace

std::optional<DisplayName> DisplayName::parse(const QString &text)
{
    QString address = text;
    QString port;
    if (text.startsWith(u'[') && text.contains(u']')) {
        address = text.mid(1).section(u']', 0, 0);
        port = text.section(u']', 1);
    } else if (text.count(u':') == 1) {
        address = text.section(u':', 0, 0);
        port = text.mid(address.size());
    }
    DisplayName name{QHostAddress(address), DefaultControlPort};
    bool ok = true;
    if (!port.isEmpty())
        name.controlPort = port.startsWith(u':') ? port.mid(1).toUShort(&ok) : quint16(ok = false);
    return ok && !name.address.isNull() ? std::optional(name) : std::nullopt;
}

Console::Console(const CastOrder &order) : m_cast(order)
{
    connect(&m_cast, &CastProcess::told, this,
        [](const QString &kind, const QJsonObject &content) { print(textOf(kind, content)); });
    connect(&m_cast, &CastProcess::ended, this, [this](const CastEnd &end) {
        print(end.text);
        Q_EMIT finished(end.reason == CastEnd::Asked || end.reason == CastEnd::Sink ? 0 : 1);
    });
}

bool printCheck(Picture picture, const Elements &elements)
{
    ScreenWatch watch(picture);
    QEventLoop loop;
    QObject::connect(&watch, &ScreenWatch::changed, &loop, &QEventLoop::quit);
    loop.exec();
    const auto orNone = [](const QString &name) { return name.isEmpty() ? QStringLiteral("none") : name; };
    const Screen &screen = watch.screen();
    print(QLatin1String("screen   ") + orNone(screen.capture) + QLatin1String(" (") + screen.remark + u')');
    print(QLatin1String("picture  ") + orNone(elements.videoName()));
    print(QLatin1String("sound    ") + orNone(elements.audioName()));
    print(QLatin1String("missing  ") + orNone(elements.missing));
    return !screen.capture.isEmpty() && elements.missing.isEmpty();
}

} // namespace oz::cast
