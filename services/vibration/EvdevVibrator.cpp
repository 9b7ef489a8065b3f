#include "vibration/EvdevVibrator.hpp"

#include "linux/SysFolder.hpp"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace oz::services {

namespace {

const QString Inputs = QStringLiteral("/sys/class/input");

// Tells whether a bit is set in the kernel's words, of which the last has the lowest bits.
bool hasBit(const QString &words, int bit)
{
    constexpr int WordBits = int(sizeof(long)) * 8;
    const QStringList list = words.split(u' ', Qt::SkipEmptyParts);
    const qsizetype index = list.size() - 1 - bit / WordBits;
    return index >= 0 && (list[index].toULongLong(nullptr, 16) >> (bit % WordBits)) & 1;
}

QString capability(const QString &device, const char *kind)
{
    return SysFolder::readFile(
        Inputs + u'/' + device + QLatin1String("/device/capabilities/") + QLatin1String(kind))
        .value_or(QString());
}

// The device file of the motor, or why there is none.
struct Place
{
    QByteArray file;
    QString problem;
};

Place placeOf(const QString &wanted)
{
    const QStringList devices =
        QDir(Inputs).entryList({QStringLiteral("event*")}, QDir::AllEntries | QDir::NoDotAndDotDot);
    for (const QString &device : devices) {
        const QString kinds = capability(device, "ev");
        const bool isMotor = !hasBit(kinds, EV_KEY) && !hasBit(kinds, EV_ABS);
        if (!hasBit(capability(device, "ff"), FF_RUMBLE) || (wanted.isEmpty() ? !isMotor : device != wanted))
            continue;
        const QString file = QLatin1String("/dev/input/") + device;
        if (::access(QFile::encodeName(file).constData(), R_OK | W_OK) == 0)
            return {QFile::encodeName(file), {}};
        return {{},
            QLatin1String("may not open ") + file + QLatin1String(": ") + qt_error_string(errno)
                + QLatin1String("; the group 'ozdevice' may, by the udev rule 60-ozdevice.rules")};
    }
    return {{},
        wanted.isEmpty() ? QStringLiteral("no input device is a vibration motor")
                         : QString(wanted + QLatin1String(" is no input device that can rumble"))};
}

} // namespace

class EvdevVibrator::Motor
{
public:
    ~Motor() { stop(); }

    void place(const QByteArray &file)
    {
        if (file != m_file)
            stop();
        m_file = file;
    }

    [[nodiscard]] Outcome drive(int intensity)
    {
        if (intensity == 0) {
            stop();
            return {};
        }
        if (m_fd < 0)
            m_fd = ::open(m_file.constData(), O_RDWR | O_CLOEXEC | O_NONBLOCK);
        ff_effect effect{};
        effect.type = FF_RUMBLE;
        effect.id = m_effect;
        effect.u.rumble.strong_magnitude = effect.u.rumble.weak_magnitude = quint16(intensity * 0xffff / 100);
        effect.replay.length = 0; // until it is stopped
        if (m_fd < 0 || ::ioctl(m_fd, EVIOCSFF, &effect) < 0 || !play((m_effect = effect.id), 1)) {
            const int error = errno;
            stop();
            return {
                error, QString(QFile::decodeName(m_file) + QLatin1String(": ") + qt_error_string(error)), {}};
        }
        return {};
    }

private:
    [[nodiscard]] bool play(qint16 effect, int times) const
    {
        input_event event{};
        event.type = EV_FF;
        event.code = quint16(effect);
        event.value = times;
        return ::write(m_fd, &event, sizeof event) == ssize_t(sizeof event);
    }

    void stop()
    {
        if (m_fd >= 0 && m_effect >= 0) {
            (void)play(m_effect, 0);
            (void)::ioctl(m_fd, EVIOCRMFF, int(m_effect));
        }
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = -1;
        m_effect = -1;
    }

    QByteArray m_file;
    int m_fd = -1;
    qint16 m_effect = -1; // none is uploaded yet
};

EvdevVibrator::EvdevVibrator(const QString &device)
    : m_device(device), m_motor(std::make_shared<Motor>()),
      m_monitor(QStringLiteral("input"), [this] { find(); })
{
    find();
}

EvdevVibrator::~EvdevVibrator()
{
    m_worker.enqueue([motor = m_motor] { (void)motor->drive(0); });
}

void EvdevVibrator::find()
{
    m_worker.post(
        this,
        [device = m_device, motor = m_motor] {
            Place place = placeOf(device);
            motor->place(place.file);
            return place;
        },
        [this](const Place &place) {
            if (place.problem.isEmpty())
                know({true});
            else
                setAbsent(place.problem);
        });
}

void EvdevVibrator::drive(int intensity, const Done &done)
{
    m_worker.post(
        this, [motor = m_motor, intensity] { return motor->drive(intensity); },
        [this, done](const Outcome &outcome) {
            if (outcome.error)
                find();
            done(outcome);
        });
}

} // namespace oz::services
