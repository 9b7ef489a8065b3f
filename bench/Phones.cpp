// Hundreds of phones at once on one machine: whether each is alone, how long one takes to start, and what it
// needs.

#include "Processes.hpp"
#include "Report.hpp"

#include <oz/testing/Phone.hpp>

#include <QFile>
#include <QProcess>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <memory>
#include <thread>

using namespace oz::bench;
using oz::testing::Phone;

namespace {

constexpr std::size_t AtOnce = 200;

double ms(double microseconds)
{
    return microseconds / 1000;
}

// Proportional set size of the phone's services in KiB: what is shared counts for each by its part.
double memoryOf(const Phone &phone)
{
    QFile file(QStringLiteral("/proc/%1/smaps_rollup").arg(phone.processId()));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : file.readAll().split('\n')) {
        if (line.startsWith("Pss:"))
            return line.mid(4).simplified().split(' ').value(0).toDouble();
    }
    return 0;
}

Samples measure(const char *name, std::size_t rounds, const std::function<void()> &act)
{
    Samples samples{name, {}};
    for (std::size_t i = 0; i < rounds; ++i) {
        const double begun = now();
        act();
        samples.values.push_back(ms(now() - begun));
    }
    return samples;
}

QString nameOf(std::size_t number)
{
    return QStringLiteral("phone %1").arg(number);
}

// Gives each phone a name and a charge of its own, and then looks at all of them, and again after each of
// some has changed; how many are not as they were told.
std::size_t strangers(const std::vector<std::unique_ptr<Phone>> &phones)
{
    std::vector<int> levels;
    for (std::size_t i = 0; i < phones.size(); ++i) {
        levels.push_back(int(i % 101));
        phones[i]->battery().setHeld(true);
        phones[i]->battery().setLevel(levels[i]);
        phones[i]->hardware().setDeviceName(nameOf(i));
    }
    const auto wrong = [&] {
        std::size_t count = 0;
        for (std::size_t i = 0; i < phones.size(); ++i) {
            count += phones[i]->value(QStringLiteral("battery.level")) != levels[i]
                || phones[i]->value(QStringLiteral("hardware.name")) != nameOf(i);
        }
        return count;
    };
    std::size_t found = wrong();
    for (std::size_t i = 0; i < phones.size(); i += phones.size() / 5) {
        levels[i] = 100 - levels[i];
        phones[i]->battery().setLevel(levels[i]);
        found += wrong();
    }
    return found;
}

} // namespace

int main(int argc, char **argv)
{
    const RunOptions options = runOptions(argc, argv);
    const std::size_t rounds = std::size_t(std::min(options.rounds, 40));
    const std::string daemon = std::string(argv[0]).substr(0, std::string(argv[0]).rfind('/')) + "/ozdeviced";
    const Samples program = measure("start and end of the program alone (--version)", rounds, [&] {
        QProcess process;
        process.start(QString::fromStdString(daemon), {QStringLiteral("--version")});
        process.waitForFinished();
    });
    std::unique_ptr<Phone> one;
    Samples start{"start of a phone, until it has answered a call", {}};
    for (std::size_t i = 0; i < rounds; ++i) {
        one.reset();
        const double begun = now();
        one = std::make_unique<Phone>(oz::testing::PhoneSettings(), Phone::Root::Own);
        (void)one->value(QStringLiteral("battery.level"));
        start.values.push_back(ms(now() - begun));
    }
    const Samples call = measure("a call that drives it", rounds * 10, [&] { one->battery().plug(); });
    const double alone = memoryOf(*one);
    one.reset();

    std::vector<std::unique_ptr<Phone>> phones(AtOnce);
    const double began = now();
    std::vector<std::thread> starters;
    const std::size_t cores = std::max(2U, std::thread::hardware_concurrency());
    for (std::size_t starter = 0; starter < cores; ++starter) {
        starters.emplace_back([&, starter] {
            for (std::size_t i = starter; i < AtOnce; i += cores)
                phones[i] = std::make_unique<Phone>(oz::testing::PhoneSettings(), Phone::Root::Own);
        });
    }
    for (std::thread &starter : starters)
        starter.join();
    const double all = ms(now() - began);
    const std::size_t found = strangers(phones);
    Samples memory{"memory of one of 200 phones (PSS)", {}, "KiB"};
    for (const auto &phone : phones)
        memory.values.push_back(memoryOf(*phone));
    phones.clear();

    for (const Samples *samples : std::initializer_list<const Samples *>{&program, &start, &call}) {
        std::printf("  %-54s median %7.2f ms   p90 %7.2f\n", samples->name.c_str(), samples->median(),
            samples->percentile(0.9));
    }
    std::printf(
        "  %zu phones at once: started in %.0f ms, %.1f ms each\n", AtOnce, all, all / double(AtOnce));
    std::printf("  memory (PSS): one alone %.0f KiB, one of %zu %.0f KiB\n", alone, AtOnce, memory.median());
    std::printf("  isolated: %zu readings of %zu were another phone's\n", found, AtOnce * 6);
    const std::vector<Ratio> ratios{
        ratioOf("start of a phone / start and end of its program alone", start, program, 0.5, 3),
        {"start of one of 200 at once / of one alone", all / double(AtOnce) / start.median()},
        {"memory of one of 200 / of one alone (PSS)", memory.median() / alone}};
    const bool isReached = print(ratios);
    if (!options.json.empty())
        writeJson(options.json, "ms", {program, start, call, memory}, ratios);
    return isReached && found == 0 ? 0 : 1;
}
