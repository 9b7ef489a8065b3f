#include "vibration/VibrationPublisher.hpp"

#include "source/Error.hpp"

#include <QPointer>

#include <cerrno>
#include <limits>

namespace oz::services {

namespace {

constexpr int UntilStopped = std::numeric_limits<int>::max();

int numberIn(const QVariantMap &request, const QString &name, int most)
{
    const QVariant value = request.value(name);
    if (value.typeId() != QMetaType::Int || value.toInt() < 0 || value.toInt() > most) {
        throw Error(u'\'' + name + QLatin1String("' is a whole number from 0 to ") + QString::number(most)
            + QLatin1String(", not '") + value.toString().left(64) + u'\'');
    }
    return value.toInt();
}

} // namespace

class VibrationPublisher::Vibrator final : public ServedObject
{
public:
    explicit Vibrator(VibrationPublisher &publisher)
        : ServedObject(publisher.tree(), VibratorPath), m_publisher(publisher)
    {
    }

private:
    void onMessage(
        const PpsServer::Client &client, const QVariantMap &attributes, const QString &malformed) override
    {
        QVariantMap answer;
        try {
            if (!malformed.isEmpty())
                throw Error(malformed);
            answer = m_publisher.onRequest(attributes);
        } catch (const Error &error) {
            Reply::failure(EINVAL, QString::fromUtf8(error.what())).addErrorTo(&answer);
        }
        // Most clients are gone by now, which is all the same.
        server().send(client.id, answer);
    }

    VibrationPublisher &m_publisher;
};

VibrationPublisher::VibrationPublisher(const QString &facility, VibrationSource &source, Tree &tree)
    : PublisherOf(facility, source, tree), m_activity(tree, vibrationActivityFields().path())
{
    m_end.setSingleShot(true);
    m_end.setTimerType(Qt::PreciseTimer);
    connect(&m_end, &QTimer::timeout, this, [this] { endRun(QStringLiteral("done")); });
    publishActivity();
    follow();
}

VibrationPublisher::~VibrationPublisher()
{
    endRun(QStringLiteral("stopped"));
}

void VibrationPublisher::publishState(const VibrationState &state)
{
    if (!state.present.value_or(false)) {
        publishAbsence();
    } else if (!m_vibrator) {
        m_vibrator = std::make_unique<Vibrator>(*this);
        m_vibrator->start(0666);
    }
}

void VibrationPublisher::publishAbsence()
{
    m_vibrator.reset();
    endRun(QStringLiteral("stopped"));
}

QVariantMap VibrationPublisher::onRequest(const QVariantMap &request)
{
    const int duration = numberIn(request, VibrationDuration, UntilStopped);
    const int intensity = numberIn(request, VibrationIntensity, 100);
    if (duration == 0 || intensity == 0)
        endRun(QStringLiteral("stopped"));
    else
        run(duration, intensity);
    return {{VibrationDuration, duration}, {VibrationIntensity, intensity}};
}

void VibrationPublisher::run(int duration, int intensity)
{
    finish(QStringLiteral("replaced"));
    m_told.run = {QDateTime::currentDateTimeUtc(), duration, intensity};
    m_running.start();
    ++m_told.runs;
    if (duration != UntilStopped)
        m_end.start(duration);
    drive(intensity);
    publishActivity();
}

void VibrationPublisher::endRun(const QString &how)
{
    if (!m_told.run)
        return;
    finish(how);
    drive(0);
    publishActivity();
}

void VibrationPublisher::finish(const QString &how)
{
    if (!m_told.run)
        return;
    m_end.stop();
    m_told.last = std::exchange(m_told.run, std::nullopt);
    m_told.last->ran = m_running.elapsed();
    m_told.last->end = how;
}

void VibrationPublisher::drive(int intensity)
{
    source().drive(intensity, [self = QPointer(this)](const Outcome &outcome) {
        if (self)
            self->m_warn(
                outcome.error ? self->facility() + QLatin1String(": ") + outcome.errorText : QString());
    });
}

void VibrationPublisher::publishActivity()
{
    m_activity.publish(vibrationActivityFields().attributes(m_told));
}

} // namespace oz::services
