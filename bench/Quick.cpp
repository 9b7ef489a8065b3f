// The classes in QML: what they add to the time until a scene's first frame, and the way from a publish in
// another process to a binding, beside that to the signal it comes from.

#include "Messages.hpp"
#include "PowerDevice.hpp"
#include "Processes.hpp"
#include "Report.hpp"

#include <oz/PpsPublisher.hpp>
#include <oz/device/BatteryInfo.hpp>

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickView>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <memory>

using namespace oz;
using namespace oz::bench;

namespace {

const char *const SceneWithout = R"(
import QtQuick
Rectangle { width: 320; height: 480; Text { text: "80 %" } }
)";

const char *const SceneWith = R"(
import QtQuick
import oz.device
Rectangle {
    width: 320; height: 480
    Text { text: battery.level + " %" }
    BatteryInfo { id: battery }
    CellularDataInterface { name: "internet" }
    CellularNetworkInfo { }
    CellularRadioInfo { }
    DeviceInfo { }
    DisplayInfo { }
    HardwareInfo { }
    Led { }
    MiracastManager { }
    NetworkDataUsage { }
    SdCardInfo { }
    SimCardInfo { }
    VibrationController { }
    WiFiDirect { }
}
)";

const char *const Binding = R"(
import QtQml
import oz.device
QtObject {
    property BatteryInfo battery: BatteryInfo { }
    property string text: battery.level + " %"
    onTextChanged: hearer.hear()
}
)";

/*! The change that the binding reports. */
class Hearer : public QObject
{
    Q_OBJECT

public:
    explicit Hearer(const Bell &bell) : m_bell(bell) { }
    Q_INVOKABLE void hear() const
    {
        if (isReady)
            m_bell.ring();
    }

    bool isReady = false; // the first value is no change

private:
    Bell m_bell;
};

// Rings when it begins, and with the first frame.
int showScene(const char *scene, const Bell &bell)
{
    bell.ring();
    bell.ring();
    QQuickView view;
    view.engine()->addImportPath(QStringLiteral(OZ_QML_MODULES));
    QQmlComponent component(view.engine());
    component.setData(scene, QUrl());
    std::unique_ptr<QObject> root(component.create());
    if (!root) {
        std::fprintf(stderr, "bench: %s\n", qPrintable(component.errorString()));
        return 1;
    }
    view.setContent(QUrl(), &component, root.get());
    QObject::connect(&view, &QQuickWindow::frameSwapped, &view, [bell] { bell.ring(); });
    view.show();
    return QGuiApplication::exec();
}

int follow(const QString &role, const Bell &bell)
{
    if (role == "signal") {
        const device::BatteryInfo battery;
        QObject::connect(&battery,
            qOverload<int, device::BatteryChargingState::Type>(&device::BatteryInfo::levelChanged),
            [bell] { bell.ring(); });
        bell.ring();
        return QGuiApplication::exec();
    }
    QQmlEngine engine;
    engine.addImportPath(QStringLiteral(OZ_QML_MODULES));
    Hearer hearer(bell);
    engine.rootContext()->setContextProperty("hearer", &hearer);
    QQmlComponent component(&engine);
    component.setData(Binding, QUrl());
    const std::unique_ptr<QObject> root(component.create());
    if (!root) {
        std::fprintf(stderr, "bench: %s\n", qPrintable(component.errorString()));
        return 1;
    }
    hearer.isReady = true;
    bell.ring();
    return QGuiApplication::exec();
}

void printFigures(const Samples &samples)
{
    std::printf("  %-54s median %8.1f   p10 %8.1f   p90 %8.1f\n", samples.name.c_str(), samples.median(),
        samples.percentile(0.1), samples.percentile(0.9));
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    const QGuiApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.value(1) == "--role") {
        const Bell bell(words.value(2).toInt());
        const QString role = words.value(3);
        if (role == "with" || role == "without")
            return showScene(role == "with" ? SceneWith : SceneWithout, bell);
        return follow(role, bell);
    }
    const auto [json, rounds] = runOptions(argc, argv);

    const QTemporaryDir root("/dev/shm/oz-bench-XXXXXX");
    qputenv("OZ_DEVICE_ROOT", root.path().toLocal8Bit());
    qputenv("XDG_RUNTIME_DIR", root.path().toLocal8Bit()); // else Qt says for each scene that there is none
    publishAll();
    const PowerDevice powerManager;
    const Message &battery = *std::find_if(messages().begin(), messages().end(),
        [](const Message &message) { return message.facility == "battery"; });
    PpsPublisher publisher(battery.path);

    // In turns, so that whatever else the machine does falls on both.
    Samples with{"scene with all classes, to its first frame", {}};
    Samples without{"the same scene without them", {}};
    Samples binding{"publish to binding", {}};
    Samples signal{"publish to signal", {}};
    constexpr int parts = 20;
    for (int part = 0; part < parts; ++part) {
        for (Samples *samples : {&with, &without}) {
            const Listener scene(argv[0], {samples == &with ? "with" : "without"});
            const double begun = scene.heardAt();
            samples->values.push_back(scene.heardAt() - begun);
        }
        for (Samples *samples : {&binding, &signal}) {
            const Listener listener(argv[0], {samples == &binding ? "binding" : "signal"});
            const int warmUp = 20;
            for (int round = 0; round < rounds / parts + warmUp; ++round) {
                const double begun = now();
                publisher.replace(round % 2 == 0 ? battery.changed : battery.attributes);
                const double latency = listener.heardAt() - begun;
                if (round >= warmUp)
                    samples->values.push_back(latency);
            }
            publisher.replace(battery.attributes);
        }
    }
    std::printf("In QML, microseconds (%d rounds, in turns)\n", rounds);
    for (const Samples *samples : {&with, &without, &binding, &signal})
        printFigures(*samples);
    const std::vector<Ratio> ratios{
        ratioOf("scene with / without the classes, median", with, without, 0.5, 0),
        ratioOf("binding / signal, median", binding, signal, 0.5, 1.5),
    };
    const bool reached = print(ratios);
    if (!json.empty())
        writeJson(json, "us", {with, without, binding, signal}, ratios);
    return reached ? 0 : 1;
}

#include "Quick.moc"
