#pragma once

#include "linux/NetworkServices.hpp"
#include "miracast/CastProcess.hpp"
#include "miracast/SinkWay.hpp"

namespace oz::services {

/*!
 * Wireless displays in the network of this device: those at addresses that are given, and those that tell the
 * network of themselves. A scan finds the ones that accept connections.
 *
 * The hardware address of a sink is what it tells (p2pMAC), else what the kernel knows of the neighbour.
 * Where there is none, or another sink has it, its IP address stands in its place.
 */
class NetworkSinks final : public SinkWay
{
    Q_OBJECT

public:
    /*! The port at which displays are told to connect, where none is given. */
    static constexpr int ControlPort = 7250;

    /*! The sinks at \a fixed addresses, and, where there is a \a bus, those that Avahi finds. */
    NetworkSinks(std::shared_ptr<CastProcess> cast, const QList<CastProcess::Target> &fixed,
        std::shared_ptr<SystemBus> bus, std::chrono::milliseconds connectLimit);

    void scan(const Scanned &scanned) override;
    void cancelScan() override;
    [[nodiscard]] const QList<Sink> &sinks() const override { return m_sinks; }
    void reach(const QString &address, const QString &pin, const Reached &reached) override;
    void leave() override { }
    [[nodiscard]] QString remark() const override;
    [[nodiscard]] QVariantList saved() const override;
    void restore(const QVariantList &saved) override;

private:
    // Something that may be a sink.
    struct Candidate
    {
        QString name;
        CastProcess::Target target;
        QString hardware; // as it tells; empty where it does not
    };

    void probe(const QList<NetworkServices::Service> &services);
    void takeAccepting(const QList<Candidate> &candidates, const QStringList &accepting);
    void add(const QString &hardware, const QString &name, const CastProcess::Target &target);

    std::shared_ptr<CastProcess> m_cast;
    QList<CastProcess::Target> m_fixed;
    std::unique_ptr<NetworkServices> m_services; // null where it does not look for any
    std::chrono::milliseconds m_connectLimit;
    Scanned m_scanned; // empty while it does not scan
    quint64 m_scan = 0; // tells a scan from those that were cancelled
    QList<Sink> m_sinks;
    QList<CastProcess::Target> m_targets; // of m_sinks
};

} // namespace oz::services
