#include "sdcard/UDisksSdCard.hpp"

#include "linux/SysFolder.hpp"

#include <QDBusArgument>

#include <algorithm>
#include <chrono>

namespace oz::services {

namespace {

using namespace std::chrono_literals;

constexpr auto TrafficPause = 1s;

const QString ManagerPath = QStringLiteral("/org/freedesktop/UDisks2");
const QString DriveInterface = QStringLiteral("org.freedesktop.UDisks2.Drive");
const QString BlockInterface = QStringLiteral("org.freedesktop.UDisks2.Block");
const QString PartitionInterface = QStringLiteral("org.freedesktop.UDisks2.Partition");
const QString FilesystemInterface = QStringLiteral("org.freedesktop.UDisks2.Filesystem");
const QString JobInterface = QStringLiteral("org.freedesktop.UDisks2.Job");

QString pathIn(const QVariant &value)
{
    return value.value<QDBusObjectPath>().path();
}

// File names are bytes that end in a zero.
QString fileNameOf(const QByteArray &bytes)
{
    return QString::fromLocal8Bit(bytes.constData());
}

// The file systems that the system itself stands on.
bool isOfSystem(const QString &mountPoint)
{
    return mountPoint == u"/" || mountPoint == u"/usr" || mountPoint == u"/boot"
        || mountPoint.startsWith(u"/boot/");
}

// Reads are counted in the first field, writes in the fifth; the ninth is what is in flight.
UDisksSdCard::Traffic trafficOf(const QString &disk)
{
    const QStringList fields =
        SysFolder::readFile(QLatin1String("/sys/class/block/") + disk + QLatin1String("/stat"))
            .value_or(QString())
            .split(u' ', Qt::SkipEmptyParts);
    return {{fields.value(0), fields.value(4)}, fields.value(8).toInt() > 0};
}

} // namespace

UDisksSdCard::UDisksSdCard(std::shared_ptr<SystemBus> bus, const QString &device)
    : BusSource(std::make_shared<BusService>(
                    std::move(bus), QStringLiteral("org.freedesktop.UDisks2"), QStringLiteral("udisks2")),
        ManagerPath),
      m_device(device)
{
    m_tick.setInterval(TrafficPause);
    m_tick.setTimerType(Qt::VeryCoarseTimer);
    m_tick.callOnTimeout(this, [this] { readTraffic(); });
    connect(&service(), &BusService::vanished, this, [this] { watchTraffic({}); });
}

QVariant UDisksSdCard::of(const QString &path, const QString &interface, const char *property) const
{
    return objects().property(path, interface, QLatin1String(property));
}

QString UDisksSdCard::nameOf(const QString &block) const
{
    return fileNameOf(of(block, BlockInterface, "Device").toByteArray()).section(u'/', -1);
}

QStringList UDisksSdCard::blocksOf(const QString &drive) const
{
    QStringList blocks;
    const auto add = [&](auto &&belongs) {
        const qsizetype before = blocks.size();
        for (auto object = objects().all().begin(); object != objects().all().end(); ++object) {
            if (object->contains(BlockInterface) && !blocks.contains(object.key()) && belongs(object.key()))
                blocks.append(object.key());
        }
        return blocks.size() > before;
    };
    add([&](const QString &block) { return pathIn(of(block, BlockInterface, "Drive")) == drive; });
    // A decrypted volume is a device of its own, and may have partitions, or volumes, on top of it.
    while (add([&](const QString &block) {
        return blocks.contains(pathIn(of(block, BlockInterface, "CryptoBackingDevice")));
    })) { }
    return blocks;
}

QStringList UDisksSdCard::mountPointsOf(const QStringList &blocks) const
{
    QStringList mountPoints;
    for (const QString &block : blocks) {
        const auto places = qdbus_cast<QByteArrayList>(of(block, FilesystemInterface, "MountPoints"));
        for (const QByteArray &place : places)
            mountPoints.append(fileNameOf(place));
    }
    return mountPoints;
}

QString UDisksSdCard::drive() const
{
    const auto rank = [this](const QString &drive) {
        QStringList media = of(drive, DriveInterface, "MediaCompatibility").toStringList();
        media.append(of(drive, DriveInterface, "Media").toString());
        const auto has = [&](QStringView kind) {
            return std::any_of(
                media.begin(), media.end(), [&](const QString &medium) { return medium.startsWith(kind); });
        };
        const bool isRemovable = of(drive, DriveInterface, "Removable").toBool()
            || of(drive, DriveInterface, "MediaRemovable").toBool();
        if (!isRemovable)
            return 0;
        if (has(u"flash_sd"))
            return 3;
        if (has(u"flash_mmc"))
            return 2;
        return of(drive, DriveInterface, "ConnectionBus").toString() == u"sdio" ? 1 : 0;
    };
    QString best;
    int bestRank = 0;
    for (auto object = objects().all().begin(); object != objects().all().end(); ++object) {
        if (!object->contains(DriveInterface))
            continue;
        // An empty reader is no card, and gives way to a reader that holds one.
        const bool isEmpty = !of(object.key(), DriveInterface, "MediaAvailable").toBool();
        const int candidate = isEmpty ? 0 : rank(object.key());
        const QStringList mountPoints =
            candidate > bestRank ? mountPointsOf(blocksOf(object.key())) : QStringList();
        if (candidate > bestRank && std::none_of(mountPoints.begin(), mountPoints.end(), isOfSystem)) {
            best = object.key();
            bestRank = candidate;
        }
    }
    return best;
}

QStringList UDisksSdCard::cardBlocks() const
{
    QString card = m_device.isEmpty() ? drive() : QString();
    if (!m_device.isEmpty()) {
        const QStringList paths = objects().all().keys();
        const auto named = std::find_if(
            paths.begin(), paths.end(), [this](const QString &path) { return nameOf(path) == m_device; });
        if (named != paths.end())
            card = pathIn(of(*named, BlockInterface, "Drive"));
        if (card == u"/") // a device of no drive: itself, and no others that are of none
            return {*named};
    }
    return card.isEmpty() ? QStringList() : blocksOf(card);
}

bool UDisksSdCard::hasJob(const QStringList &blocks) const
{
    for (auto object = objects().all().begin(); object != objects().all().end(); ++object) {
        const auto about = qdbus_cast<QList<QDBusObjectPath>>(of(object.key(), JobInterface, "Objects"));
        for (const QDBusObjectPath &path : about) {
            const bool isCard = std::any_of(blocks.begin(), blocks.end(), [&](const QString &block) {
                return path.path() == block || path.path() == pathIn(of(block, BlockInterface, "Drive"));
            });
            if (isCard && path.path() != u"/")
                return true;
        }
    }
    return false;
}

void UDisksSdCard::readState()
{
    const QStringList blocks = cardBlocks();
    const bool isMounted = !mountPointsOf(blocks).isEmpty();
    QString disk;
    for (const QString &block : blocks) {
        if (isMounted && !objects().all().value(block).contains(PartitionInterface)
            && pathIn(of(block, BlockInterface, "CryptoBackingDevice")) == u"/")
            disk = nameOf(block);
    }
    const bool hasTraffic = disk == m_disk && m_hasTraffic;
    if (know({isMounted, hasJob(blocks) || hasTraffic}))
        watchTraffic(disk);
}

// A service that has just started may not have found the card yet, or not what is on it.
bool UDisksSdCard::isIncomplete(const SdCard &now, const std::optional<SdCard> &before) const
{
    return before && before->mounted == true && now.mounted == false;
}

void UDisksSdCard::watchTraffic(const QString &disk)
{
    if (disk == m_disk)
        return;
    m_disk = disk;
    m_traffic.reset();
    m_hasTraffic = false;
    if (disk.isEmpty()) {
        m_tick.stop();
    } else {
        readTraffic();
        m_tick.start();
    }
}

void UDisksSdCard::readTraffic()
{
    if (std::exchange(m_isReading, true))
        return;
    m_worker.post(
        this, [disk = m_disk] { return trafficOf(disk); },
        [this, disk = m_disk](const Traffic &traffic) {
            m_isReading = false;
            if (disk == m_disk)
                onTraffic(traffic);
        });
}

void UDisksSdCard::onTraffic(const Traffic &traffic)
{
    const bool hasTraffic = traffic.isUnderWay || (m_traffic && traffic.completed != m_traffic->completed);
    m_traffic = traffic;
    if (std::exchange(m_hasTraffic, hasTraffic) != hasTraffic && objects().isComplete())
        readState();
}

} // namespace oz::services
