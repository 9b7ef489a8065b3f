#include "miracast/SinkWays.hpp"

#include <utility>

namespace oz::services {

SinkWays::SinkWays(std::vector<std::unique_ptr<SinkWay>> ways) : m_ways(std::move(ways))
{
    for (const auto &way : m_ways)
        connect(way.get(), &SinkWay::remarkChanged, this, &SinkWays::remarkChanged);
}

void SinkWays::scan(const MiracastSource::Done &done)
{
    m_scans.append(done);
    if (m_scans.size() > 1)
        return;
    m_left = m_ways.size();
    m_failed = 0;
    for (const auto &way : m_ways) {
        way->scan([this](Result result) {
            if (result != Result::Success)
                ++m_failed;
            // What one way has found counts, even if another has failed.
            if (--m_left == 0)
                finishScan(m_failed == m_ways.size() ? result : Result::Success);
        });
    }
}

void SinkWays::cancelScan(Result result)
{
    for (const auto &way : m_ways)
        way->cancelScan();
    finishScan(result);
}

void SinkWays::finishScan(Result result)
{
    const QList<MiracastSource::Done> scans = std::exchange(m_scans, {});
    if (result == Result::Success)
        Q_EMIT scanned();
    for (const MiracastSource::Done &done : scans)
        done(result);
}

QList<MiracastState::Sink> SinkWays::sinks() const
{
    QList<MiracastState::Sink> sinks;
    for (const auto &way : m_ways)
        sinks += way->sinks();
    return sinks;
}

SinkWays::Found SinkWays::find(const QString &address) const
{
    for (const auto &way : m_ways) {
        for (const MiracastState::Sink &sink : way->sinks()) {
            if (sink.address.compare(address, Qt::CaseInsensitive) == 0)
                return {way.get(), sink};
        }
    }
    return {};
}

QString SinkWays::remark() const
{
    QStringList remarks;
    for (const auto &way : m_ways)
        remarks.append(way->remark());
    return remarks.join(QLatin1String("; "));
}

QVariantList SinkWays::saved() const
{
    QVariantList saved;
    for (const auto &way : m_ways)
        saved.append(QVariant(way->saved()));
    return saved;
}

void SinkWays::restore(const QVariantList &saved)
{
    for (std::size_t i = 0; i < m_ways.size(); ++i)
        m_ways[i]->restore(saved.value(qsizetype(i)).toList());
}

} // namespace oz::services
