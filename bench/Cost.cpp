// The cost of things within one process: decoding and encoding beside Qt's JSON, construction, memory, many
// subscribers.

#include "Messages.hpp"
#include "PowerDevice.hpp"
#include "Report.hpp"

#include <oz/EventService.hpp>
#include <oz/PpsObject.hpp>
#include <oz/PpsPublisher.hpp>
#include <oz/device/BatteryInfo.hpp>
#include <oz/device/CellularDataInterface.hpp>
#include <oz/device/CellularNetworkInfo.hpp>
#include <oz/device/CellularRadioInfo.hpp>
#include <oz/device/DeviceInfo.hpp>
#include <oz/device/DisplayInfo.hpp>
#include <oz/device/HardwareInfo.hpp>
#include <oz/device/Led.hpp>
#include <oz/device/MiracastManager.hpp>
#include <oz/device/NetworkDataUsage.hpp>
#include <oz/device/SdCardInfo.hpp>
#include <oz/device/SimCardInfo.hpp>
#include <oz/device/VibrationController.hpp>
#include <oz/device/WiFiDirect.hpp>

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <map>
#include <memory>
#include <unistd.h>

using namespace oz;
using namespace oz::bench;

namespace {

const QString SdCard = "/pps/system/filesystem/removable/sdcard";
const QString Battery = "/pps/system/BattMgr/status";

void registerCodec(const std::string &name, const QVariantMap &attributes)
{
    const QByteArray text = "@status\n" + PpsObject::encode(attributes);
    const QByteArray json =
        QJsonDocument(QJsonObject::fromVariantMap(attributes)).toJson(QJsonDocument::Compact);
    const auto add = [&](const char *what, const auto &body) {
        benchmark::RegisterBenchmark(
            (std::string(what) + '/' + name).c_str(), [body](benchmark::State &state) {
                for ([[maybe_unused]] auto _ : state)
                    body();
            });
    };
    add("decode", [text] { benchmark::DoNotOptimize(PpsObject::decode(text)); });
    add("json-decode",
        [json] { benchmark::DoNotOptimize(QJsonDocument::fromJson(json).toVariant().toMap()); });
    add("json-parse", [json] { benchmark::DoNotOptimize(QJsonDocument::fromJson(json)); });
    add("encode", [attributes] { benchmark::DoNotOptimize(PpsObject::encode(attributes)); });
    add("json-encode", [attributes] {
        benchmark::DoNotOptimize(
            QJsonDocument(QJsonObject::fromVariantMap(attributes)).toJson(QJsonDocument::Compact));
    });
}

template <typename Facility, typename... Arguments>
void registerConstruct(const char *name, const Arguments &...arguments)
{
    benchmark::RegisterBenchmark(name, [arguments...](benchmark::State &state) {
        for ([[maybe_unused]] auto _ : state) {
            const Facility facility(arguments...);
            benchmark::DoNotOptimize(&facility);
        }
    });
}

// One publish to so many subscribers of this process, until the last has had its signal.
void fanOut(benchmark::State &state)
{
    std::vector<std::unique_ptr<device::SdCardInfo>> cards;
    std::int64_t heard = 0;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        cards.push_back(std::make_unique<device::SdCardInfo>());
        QObject::connect(cards.back().get(),
            qOverload<device::SdCardState::Type>(&device::SdCardInfo::stateChanged), [&] { ++heard; });
    }
    PpsPublisher publisher(SdCard);
    bool mounted = cards.front()->state() == device::SdCardState::Mounted;
    for ([[maybe_unused]] auto _ : state) {
        heard = 0;
        publisher.publish({{"mounted", mounted = !mounted}, {"busy", false}});
        while (heard < state.range(0))
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    state.counters["per-subscriber"] = benchmark::Counter(
        double(state.range(0)), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// One notification of a battery that is as it was, from the publish of something else in its object on.
template <typename Listener>
void unchangedBattery(benchmark::State &state)
{
    const Listener listener;
    PpsPublisher publisher(Battery);
    QCoreApplication::processEvents();
    static int round = 0; // never the same again, which would be no news
    for ([[maybe_unused]] auto _ : state) {
        publisher.publish({{"round", ++round}});
        const auto published = std::chrono::steady_clock::now();
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - published;
        state.SetIterationTime(taken.count());
    }
}

// The least that any subscriber does.
class ReadAndDecode
{
public:
    ReadAndDecode()
    {
        QObject::connect(&m_object, &PpsObject::readyRead,
            [this] { benchmark::DoNotOptimize(PpsObject::decode(m_object.read())); });
        m_object.open(PpsOpenMode::Subscribe);
        (void)m_object.read();
    }

private:
    PpsObject m_object{Battery};
};

// Resident memory of this process in bytes.
double residentMemory()
{
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return double(resident) * double(::sysconf(_SC_PAGESIZE));
}

double memoryOfOne()
{
    constexpr int count = 1000;
    std::vector<std::unique_ptr<device::SdCardInfo>> cards;
    cards.push_back(std::make_unique<device::SdCardInfo>()); // what the first one loads is not its own
    const double before = residentMemory();
    for (int i = 0; i < count; ++i)
        cards.push_back(std::make_unique<device::SdCardInfo>());
    return (residentMemory() - before) / count;
}

// The memory, in bytes, that this many rounds of asking for an event and getting it leave behind.
double growthOfEvents(int rounds)
{
    int ends[2];
    if (::pipe(ends) < 0 || hub_initialize() < 0)
        std::abort();
    int heard = 0;
    const auto count = [](void *data) { return 0 * ++*static_cast<int *>(data); };
    oz::sigevent event;
    hub_add_sigevent_handler(&event, count, &heard);
    const double before = residentMemory();
    for (int round = 1; round <= rounds; ++round) {
        char byte = 0;
        if (ionotify(ends[0], NotifyActionPollArm, NotifyConditionInput, &event) != 0
            || ::write(ends[1], &byte, 1) != 1)
            std::abort();
        while (heard < round)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (::read(ends[0], &byte, 1) != 1)
            std::abort();
    }
    const double growth = residentMemory() - before;
    hub_remove_sigevent_handler(&event);
    hub_shutdown();
    ::close(ends[0]);
    ::close(ends[1]);
    return growth;
}

// Prints the medians of the repetitions, and keeps the times of all for the ratios.
class Keeper : public benchmark::ConsoleReporter
{
public:
    void ReportRuns(const std::vector<Run> &runs) override
    {
        std::vector<Run> medians;
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Iteration)
                times[run.benchmark_name()].values.push_back(run.GetAdjustedRealTime());
            else if (run.aggregate_name == "median")
                medians.push_back(run);
        }
        if (!medians.empty())
            ConsoleReporter::ReportRuns(medians);
    }
    std::map<std::string, Samples> times;
};

} // namespace

int main(int argc, char **argv)
{
    std::string json;
    if (argc > 2 && std::string(argv[1]) == "--json") {
        json = argv[2];
        argv[2] = argv[0];
        argv += 2;
        argc -= 2;
    }
    const QCoreApplication application(argc, argv);
    const QTemporaryDir root("/dev/shm/oz-bench-XXXXXX");
    qputenv("OZ_DEVICE_ROOT", root.path().toLocal8Bit());
    publishAll();
    const PowerDevice device;
    (void)growthOfEvents(100); // what the first ones load stays
    std::printf("Memory after 1,000 rounds of notify and deliver: %.0f bytes more\n", growthOfEvents(1000));
    std::printf("Memory of one live SdCardInfo among 1,000: %.0f bytes\n", memoryOfOne());

    for (const Message &message : messages())
        registerCodec(message.facility, message.attributes);
    registerConstruct<device::SdCardInfo>("construct/SdCardInfo");
    registerConstruct<device::BatteryInfo>("construct/BatteryInfo");
    registerConstruct<device::HardwareInfo>("construct/HardwareInfo");
    registerConstruct<device::SimCardInfo>("construct/SimCardInfo");
    registerConstruct<device::CellularRadioInfo>("construct/CellularRadioInfo");
    registerConstruct<device::CellularNetworkInfo>("construct/CellularNetworkInfo");
    registerConstruct<device::CellularDataInterface>(
        "construct/CellularDataInterface", QStringLiteral("internet"));
    registerConstruct<device::Led>("construct/Led");
    registerConstruct<device::VibrationController>("construct/VibrationController");
    registerConstruct<device::NetworkDataUsage>("construct/NetworkDataUsage", QStringLiteral("lo"));
    registerConstruct<device::DeviceInfo>("construct/DeviceInfo");
    registerConstruct<device::DisplayInfo>("construct/DisplayInfo", 0);
    registerConstruct<device::WiFiDirect>("construct/WiFiDirect");
    registerConstruct<device::MiracastManager>("construct/MiracastManager");
    benchmark::RegisterBenchmark("publish-to", fanOut)->RangeMultiplier(10)->Range(1, 1000)->UseRealTime();
    benchmark::RegisterBenchmark("unchanged/BatteryInfo", unchangedBattery<device::BatteryInfo>)
        ->UseManualTime();
    benchmark::RegisterBenchmark("unchanged/read-and-decode", unchangedBattery<ReadAndDecode>)
        ->UseManualTime();
    // Repeated, so that the noise is seen; what the call says counts for more.
    std::vector<std::string> words{argv[0], "--benchmark_repetitions=5", "--benchmark_min_time=0.1"};
    words.insert(words.end(), argv + 1, argv + argc);
    std::vector<char *> arguments;
    arguments.reserve(words.size());
    for (std::string &word : words)
        arguments.push_back(word.data());
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    Keeper keeper;
    benchmark::RunSpecifiedBenchmarks(&keeper);

    std::vector<Ratio> ratios;
    const auto add = [&](const std::string &over, const std::string &under, double aim) {
        // A filter on the command line leaves some out.
        if (argc == 1 || (keeper.times.contains(over) && keeper.times.contains(under)))
            ratios.push_back(
                ratioOf(over + " / " + under, keeper.times[over], keeper.times[under], 0.5, aim));
    };
    for (const Message &message : messages()) {
        const std::string &name = message.facility;
        add("decode/" + name, "json-decode/" + name, 1.5);
        add("decode/" + name, "json-parse/" + name, 0);
        add("encode/" + name, "json-encode/" + name, 1.5);
    }
    const auto perSubscriber = [&](int more, int fewer) {
        const Samples &all = keeper.times["publish-to/" + std::to_string(more) + "/real_time"];
        const Samples &some = keeper.times["publish-to/" + std::to_string(fewer) + "/real_time"];
        Samples each;
        for (std::size_t i = 0; i < std::min(all.values.size(), some.values.size()); ++i)
            each.values.push_back((all.values[i] - some.values[i]) / (more - fewer));
        return each;
    };
    if (const Samples hundred = perSubscriber(100, 10); hundred.median() > 0) {
        ratios.push_back(ratioOf(
            "cost of a further subscriber, of 1,000 / of 100", perSubscriber(1000, 100), hundred, 0.5, 1.5));
    }
    add("unchanged/BatteryInfo/manual_time", "unchanged/read-and-decode/manual_time", 1.25);
    const bool reached = print(ratios);
    if (!json.empty()) {
        std::vector<Samples> samples;
        for (auto &[name, one] : keeper.times) {
            one.name = name;
            samples.push_back(one);
        }
        writeJson(json, "ns", samples, ratios);
    }
    return reached ? 0 : 1;
}
