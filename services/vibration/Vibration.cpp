#include "vibration/Vibration.hpp"

namespace oz::services {

namespace {

using Run = VibrationActivity::Run;

QVariantMap attributesOf(const Run &run)
{
    QVariantMap attributes{{QStringLiteral("started"), run.started.toString(Qt::ISODateWithMs)},
        {VibrationDuration, run.duration}, {VibrationIntensity, run.intensity}};
    if (run.ran)
        attributes.insert({{QStringLiteral("ran"), *run.ran}, {QStringLiteral("end"), run.end}});
    return attributes;
}

// A run, whose members are read one by one.
Column<VibrationActivity> runOf(std::optional<Run> VibrationActivity::*member)
{
    return Columns<VibrationActivity>::custom({}, [member](const VibrationActivity &activity) {
        return activity.*member ? QVariant(attributesOf(*(activity.*member))) : QVariant();
    });
}

AskedRequest vibratorRequest(const char *name, bool runs, const char *help)
{
    AskedRequest request{QString::fromLatin1(name), {}, QString::fromUtf8(help), {}};
    if (runs)
        request.parts = {{VibrationDuration, {ValueType::Number}}, {VibrationIntensity, {ValueType::Number}}};
    request.read = [runs](const QString &asked, const QVariantMap &attributes) -> QVariant {
        const bool isRun = attributes.value(VibrationDuration).toInt() != 0
            && attributes.value(VibrationIntensity).toInt() != 0;
        return asked == VibratorPath && isRun == runs ? QVariant(attributes) : QVariant();
    };
    return request;
}

} // namespace

const Fields<VibrationActivity> &vibrationActivityFields()
{
    using C = Columns<VibrationActivity>;
    static const auto isRunning = [](const VibrationActivity &activity) { return activity.run.has_value(); };
    static const ValueType number{ValueType::Number};
    static const ValueType end{
        ValueType::Word, {}, {QStringLiteral("done"), QStringLiteral("stopped"), QStringLiteral("replaced")}};
    static const Fields<VibrationActivity> fields(QStringLiteral("/pps/services/vibration/activity"),
        {
            {"running", "running", C::truth(isRunning), "whether the motor runs"},
            {"", "run", runOf(&VibrationActivity::run), ""},
            {"intensity", "run/intensity", C::custom(number, {}),
                "the intensity of the present run, up to 100"},
            {"runs", "runs", C::number(&VibrationActivity::runs),
                "how many runs there were since the service started"},
            {"", "last", runOf(&VibrationActivity::last), ""},
            {"last-duration", "last/duration", C::custom({ValueType::Number, QStringLiteral("ms")}, {}),
                "how long the last run was asked to take"},
            {"last-ran", "last/ran", C::custom({ValueType::Number, QStringLiteral("ms")}, {}),
                "how long it took"},
            {"last-intensity", "last/intensity", C::custom(number, {}), "its intensity, up to 100"},
            {"last-end", "last/end", C::custom(end, {}), "how it ended"},
        });
    return fields;
}

std::vector<AskedRequest> vibrationRequests()
{
    return {
        vibratorRequest("run", true, "to vibrate, for a duration in ms and at an intensity from 1 to 100"),
        vibratorRequest("stop", false, "to stop")};
}

} // namespace oz::services
