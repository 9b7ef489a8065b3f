#include "linux/NetworkServices.hpp"

#include <QDBusArgument>
#include <QDBusObjectPath>

#include <chrono>
#include <utility>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

const QString AvahiName = QStringLiteral("org.freedesktop.Avahi");
const QString AvahiServer = AvahiName + QLatin1String(".Server");
const QString AvahiBrowser = AvahiName + QLatin1String(".ServiceBrowser");

constexpr int AnyInterface = -1;
constexpr int InternetProtocol4 = 0;
constexpr auto SearchLimit = 3s; // Avahi has what the network says within a second or so
constexpr auto ResolveLimit = 2s;
constexpr qsizetype MostServices = 64;

QMap<QString, QString> recordsIn(const QVariant &value)
{
    QMap<QString, QString> records;
    const auto texts = qdbus_cast<QByteArrayList>(value);
    for (const QByteArray &text : texts) {
        const qsizetype end = text.indexOf('=');
        if (end > 0)
            records.insert(
                QString::fromUtf8(text.first(end)).toLower(), QString::fromUtf8(text.sliced(end + 1)));
    }
    return records;
}

} // namespace

NetworkServices::NetworkServices(std::shared_ptr<SystemBus> bus, const QString &type)
    : m_avahi(std::move(bus), AvahiName, QStringLiteral("avahi-daemon")), m_type(type)
{
    m_limit.setSingleShot(true);
    m_limit.callOnTimeout(this, [this] { m_unresolved ? finish() : resolve(); });
    connect(&m_avahi, &BusService::appeared, this, &NetworkServices::presenceChanged);
    connect(&m_avahi, &BusService::vanished, this, [this] {
        m_browser.clear();
        finish();
        Q_EMIT presenceChanged();
    });
    // At any path: what is cached is told before the path of the search is known.
    m_avahi.hear({}, AvahiBrowser, QStringLiteral("ItemNew"), this,
        [this](const QDBusMessage &message) { onItem(message); });
    for (const char *end : {"AllForNow", "Failure"}) {
        m_avahi.hear({}, AvahiBrowser, QLatin1String(end), this, [this](const QDBusMessage &message) {
            if (m_found && !m_unresolved && (m_browser.isEmpty() || message.path() == m_browser))
                resolve();
        });
    }
}

void NetworkServices::search(const Found &found)
{
    cancel();
    if (m_avahi.owner().isEmpty())
        return found({});
    m_found = found;
    m_limit.start(SearchLimit);
    m_avahi.call(QStringLiteral("/"), AvahiServer, QStringLiteral("ServiceBrowserNew"),
        {AnyInterface, InternetProtocol4, m_type, QString(), 0U}, this,
        [this, search = m_search](const QDBusMessage &answer) {
            const QString browser = answer.arguments().value(0).value<QDBusObjectPath>().path();
            if (search != m_search)
                free(browser); // the search was over before its object was known
            else if (isError(answer))
                finish();
            else
                m_browser = browser;
        });
}

void NetworkServices::cancel()
{
    ++m_search;
    m_found = nullptr;
    finish();
}

void NetworkServices::free(const QString &browser)
{
    if (!browser.isEmpty())
        m_avahi.call(browser, AvahiBrowser, QStringLiteral("Free"), {}, this, [](const QDBusMessage &) {});
}

void NetworkServices::onItem(const QDBusMessage &message)
{
    const QVariantList arguments = message.arguments();
    if (!m_found || m_unresolved || (!m_browser.isEmpty() && message.path() != m_browser)
        || m_items.size() >= MostServices || arguments.value(3).toString() != m_type)
        return;
    m_items.append({arguments.value(0).toInt(), arguments.value(1).toInt(), arguments.value(2).toString(),
        arguments.value(3).toString(), arguments.value(4).toString()});
}

void NetworkServices::resolve()
{
    if (m_items.isEmpty())
        return finish();
    m_limit.start(ResolveLimit);
    m_unresolved = m_items.size();
    for (const Item &item : std::as_const(m_items)) {
        m_avahi.call(QStringLiteral("/"), AvahiServer, QStringLiteral("ResolveService"),
            {item.interface, item.protocol, item.name, item.type, item.domain, InternetProtocol4, 0U}, this,
            [this, search = m_search](const QDBusMessage &answer) {
                if (search != m_search || !m_unresolved)
                    return;
                const QVariantList told = answer.arguments();
                if (!isError(answer)) {
                    m_services.append({told.value(2).toString(), told.value(7).toString(),
                        told.value(8).toInt(), recordsIn(told.value(9))});
                }
                if (--m_unresolved == 0)
                    finish();
            });
    }
}

// Ends the search; what was not resolved in time is not there.
void NetworkServices::finish()
{
    m_limit.stop();
    m_unresolved = 0;
    ++m_search;
    m_items.clear();
    free(std::exchange(m_browser, {}));
    const QList<Service> services = std::exchange(m_services, {});
    if (const Found found = std::exchange(m_found, nullptr))
        found(services);
}

} // namespace oz::services
