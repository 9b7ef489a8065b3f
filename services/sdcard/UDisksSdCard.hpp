#pragma once

#include "linux/BusSource.hpp"
#include "linux/Worker.hpp"
#include "sdcard/SdCard.hpp"

namespace oz::services {

/*!
 * The removable flash card, as UDisks2 tells of it: the one of the name \a device ("mmcblk1"), else an SD
 * card before other flash cards, but none that the system itself stands on. Without a card nothing is
 * mounted.
 */
class UDisksSdCard final : public BusSource<SdCardSource>
{
public:
    /*! The kernel's counters of a disk. */
    struct Traffic
    {
        QStringList completed; //!< reads and writes
        bool isUnderWay = false;
    };

    explicit UDisksSdCard(std::shared_ptr<SystemBus> bus, const QString &device = {});

private:
    void readState() override;
    [[nodiscard]] bool isIncomplete(const SdCard &now, const std::optional<SdCard> &before) const override;
    [[nodiscard]] QVariant of(const QString &path, const QString &interface, const char *property) const;
    [[nodiscard]] QString nameOf(const QString &block) const;
    /*! The block devices of the card, those that are encrypted on it among them; none without a card. */
    [[nodiscard]] QStringList cardBlocks() const;
    [[nodiscard]] QString drive() const;
    [[nodiscard]] QStringList blocksOf(const QString &drive) const;
    [[nodiscard]] QStringList mountPointsOf(const QStringList &blocks) const;
    [[nodiscard]] bool hasJob(const QStringList &objects) const;
    void watchTraffic(const QString &disk);
    void readTraffic();
    void onTraffic(const Traffic &traffic);

    QString m_device;
    QString m_disk; // whose traffic is watched: empty while nothing is mounted
    std::optional<Traffic> m_traffic; // none before it was read
    bool m_hasTraffic = false;
    bool m_isReading = false;
    QTimer m_tick;
    SerialWorker m_worker;
};

} // namespace oz::services
