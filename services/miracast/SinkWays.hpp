#pragma once

#include "miracast/SinkWay.hpp"

#include <memory>
#include <vector>

namespace oz::services {

/*! All ways to wireless displays, as one. */
class SinkWays : public QObject
{
    Q_OBJECT

public:
    using Result = MiracastSource::Result;

    explicit SinkWays(std::vector<std::unique_ptr<SinkWay>> ways);

    /*! Looks for sinks. A scan that is asked for while one runs ends with that one. */
    void scan(const MiracastSource::Done &done);
    /*! Ends the scan that runs, if any, with this \a result. */
    void cancelScan(Result result);

    [[nodiscard]] QList<MiracastState::Sink> sinks() const;
    /*! A sink in sight and the way to it; null for none. */
    struct Found
    {
        SinkWay *way = nullptr;
        MiracastState::Sink sink;
    };
    [[nodiscard]] Found find(const QString &address) const;

    /*! See SinkWay. */
    [[nodiscard]] QString remark() const;
    [[nodiscard]] QVariantList saved() const;
    void restore(const QVariantList &saved);

Q_SIGNALS:
    /*! sinks() are those of a scan that has ended. */
    void scanned();
    void remarkChanged();

private:
    void finishScan(Result result);

    std::vector<std::unique_ptr<SinkWay>> m_ways;
    QList<MiracastSource::Done> m_scans; // that wait for the end of the one that runs
    std::size_t m_left = 0; // ways that have not finished it
    std::size_t m_failed = 0;
};

} // namespace oz::services
