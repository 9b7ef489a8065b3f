#include "miracast/NetworkSinks.hpp"

#include "linux/NetworkAddresses.hpp"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace oz::services {

namespace {

const QString DisplayService = QStringLiteral("_display._tcp");
const QString HardwareRecord = QStringLiteral("p2pmac");

constexpr qsizetype LongestSinkName = 256;

// In the form that the kernel's have; empty for what is none of a device.
QString hardwareIn(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^[0-9a-f][02468ace](:[0-9a-f]{2}){5}$"));
    const QString hardware = text.toLower();
    return form.match(hardware).hasMatch() && hardware != u"00:00:00:00:00:00" ? hardware : QString();
}

// A stranger may name any address: of this device itself, or of many at once.
bool isOfDevice(const QString &address)
{
    return isIpv4(address) && !address.startsWith(u"127.") && !address.startsWith(u"0.")
        && address.section(u'.', 0, 0).toInt() < 224;
}

} // namespace

NetworkSinks::NetworkSinks(std::shared_ptr<CastProcess> cast, const QList<CastProcess::Target> &fixed,
    std::shared_ptr<SystemBus> bus, std::chrono::milliseconds connectLimit)
    : m_cast(std::move(cast)), m_fixed(fixed), m_connectLimit(connectLimit)
{
    if (!bus)
        return;
    m_services = std::make_unique<NetworkServices>(std::move(bus), DisplayService);
    connect(m_services.get(), &NetworkServices::presenceChanged, this, &SinkWay::remarkChanged);
}

void NetworkSinks::scan(const Scanned &scanned)
{
    cancelScan();
    m_scanned = scanned;
    if (m_services)
        m_services->search([this](const QList<NetworkServices::Service> &services) { probe(services); });
    else
        probe({});
}

void NetworkSinks::cancelScan()
{
    ++m_scan;
    m_scanned = nullptr;
    if (m_services)
        m_services->cancel();
}

void NetworkSinks::probe(const QList<NetworkServices::Service> &services)
{
    QList<Candidate> candidates;
    for (const CastProcess::Target &target : std::as_const(m_fixed))
        candidates.append({target.address, target, {}});
    for (const NetworkServices::Service &service : services) {
        const auto same = std::find_if(candidates.begin(), candidates.end(),
            [&](const Candidate &each) { return each.target.address == service.address; });
        const QString name = service.name.left(LongestSinkName);
        const QString hardware = hardwareIn(service.records.value(HardwareRecord));
        if (same != candidates.end() && same->name == same->target.address)
            *same = {name, same->target, hardware};
        else if (same == candidates.end() && isOfDevice(service.address) && service.port > 0)
            candidates.append({name, {service.address, service.port}, hardware});
    }
    QList<CastProcess::Target> targets;
    for (const Candidate &candidate : std::as_const(candidates))
        targets.append(candidate.target);
    if (targets.isEmpty())
        return takeAccepting({}, {});
    m_cast->probe(targets, [this, scan = m_scan, candidates](const std::optional<QStringList> &accepting) {
        if (scan != m_scan)
            return;
        if (accepting)
            takeAccepting(candidates, *accepting);
        else if (const Scanned scanned = std::exchange(m_scanned, nullptr))
            scanned(Result::ServiceFailed);
    });
}

void NetworkSinks::takeAccepting(const QList<Candidate> &candidates, const QStringList &accepting)
{
    m_sinks.clear();
    m_targets.clear();
    for (const Candidate &candidate : candidates) {
        const QString &address = candidate.target.address;
        if (!accepting.contains(address))
            continue;
        // The probe has made it a neighbour, unless a router stands between.
        QString hardware =
            candidate.hardware.isEmpty() ? NetworkAddresses::hardwareOf(address) : candidate.hardware;
        const bool isTaken = std::any_of(
            m_sinks.cbegin(), m_sinks.cend(), [&](const Sink &sink) { return sink.address == hardware; });
        if (hardware.isEmpty() || isTaken)
            hardware = address;
        add(hardware, candidate.name, candidate.target);
    }
    if (const Scanned scanned = std::exchange(m_scanned, nullptr))
        scanned(Result::Success);
}

// Nothing tells the type of a sink in a network.
void NetworkSinks::add(const QString &hardware, const QString &name, const CastProcess::Target &target)
{
    m_sinks.append({name, hardware, {}});
    m_targets.append(target);
}

void NetworkSinks::reach(const QString &address, const QString &, const Reached &reached)
{
    for (qsizetype i = 0; i < m_sinks.size(); ++i) {
        if (m_sinks[i].address.compare(address, Qt::CaseInsensitive) == 0)
            return reached(Result::Success, {m_targets[i].address, m_targets[i].port, m_connectLimit});
    }
    reached(Result::SinkNotFound, {});
}

QString NetworkSinks::remark() const
{
    QStringList ways;
    for (const CastProcess::Target &target : m_fixed)
        ways.append(QLatin1String("a sink at ") + target.address);
    if (m_services) {
        ways.append(m_services->absence().isEmpty()
                ? QStringLiteral("sinks by mDNS")
                : QString(QLatin1String("no sinks by mDNS, as ") + m_services->absence()));
    }
    return ways.isEmpty() ? QStringLiteral("no sinks, as none are named and mDNS is off")
                          : ways.join(QLatin1String("; "));
}

QVariantList NetworkSinks::saved() const
{
    QVariantList saved;
    for (qsizetype i = 0; i < m_sinks.size(); ++i)
        saved.append(QVariant(
            QVariantList{m_sinks[i].address, m_sinks[i].name, m_targets[i].address, m_targets[i].port}));
    return saved;
}

void NetworkSinks::restore(const QVariantList &saved)
{
    for (const QVariant &each : saved) {
        const QVariantList sink = each.toList();
        add(sink.value(0).toString(), sink.value(1).toString(),
            {sink.value(2).toString(), sink.value(3).toInt()});
    }
}

} // namespace oz::services
