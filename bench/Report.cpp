#include "Report.hpp"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string_view>

namespace oz::bench {

RunOptions runOptions(int argc, char **argv)
{
    RunOptions options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string_view name = argv[i];
        if (name == "--json")
            options.json = argv[i + 1];
        else if (name == "--rounds")
            options.rounds = std::atoi(argv[i + 1]);
    }
    return options;
}

double Samples::percentile(double share) const
{
    if (values.empty())
        return 0;
    std::vector<double> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    return sorted[std::min(sorted.size() - 1, std::size_t(share * double(sorted.size())))];
}

double deviation(const std::vector<double> &values)
{
    if (values.size() < 2)
        return 0;
    double sum = 0;
    for (const double value : values)
        sum += value;
    const double mean = sum / double(values.size());
    double squares = 0;
    for (const double value : values)
        squares += (value - mean) * (value - mean);
    return std::sqrt(squares / double(values.size() - 1));
}

Ratio ratioOf(const std::string &name, const Samples &over, const Samples &under, double share, double aim)
{
    const std::size_t size = std::min(over.values.size(), under.values.size());
    if (size == 0)
        return {name, std::numeric_limits<double>::quiet_NaN(), aim, 0};
    const std::size_t parts = std::min<std::size_t>(size, 10);
    std::vector<double> ratios;
    for (std::size_t part = 0; part < parts; ++part) {
        const auto slice = [&](const Samples &samples) {
            const auto at = [&](std::size_t index) {
                return samples.values.begin() + std::ptrdiff_t(index * size / parts);
            };
            return Samples{{}, {at(part), at(part + 1)}}.percentile(share);
        };
        ratios.push_back(slice(over) / slice(under));
    }
    return {name, over.percentile(share) / under.percentile(share), aim, deviation(ratios)};
}

bool print(const std::vector<Ratio> &ratios)
{
    bool reached = !ratios.empty();
    for (const Ratio &ratio : ratios) {
        std::printf("  %-62s %6.2f ± %4.2f", ratio.name.c_str(), ratio.value, ratio.noise);
        if (ratio.aim > 0) {
            std::printf("   (at most %.2f: %s)", ratio.aim,
                ratio.isMissed()               ? "MISSED"
                    : ratio.value <= ratio.aim ? "reached"
                                               : "missed by less than the noise");
        }
        std::printf("\n");
        reached = reached && !ratio.isMissed();
    }
    return reached;
}

void writeJson(const std::string &file, const std::string &unit, const std::vector<Samples> &samples,
    const std::vector<Ratio> &ratios)
{
    QJsonArray measured;
    for (const Samples &one : samples) {
        measured.append(QJsonObject{{"name", QString::fromStdString(one.name)},
            {"unit", QString::fromStdString(one.unit.empty() ? unit : one.unit)},
            {"samples", qint64(one.values.size())}, {"median", one.median()}, {"p10", one.percentile(0.1)},
            {"p90", one.percentile(0.9)}, {"p99", one.percentile(0.99)}});
    }
    QJsonArray derived;
    for (const Ratio &ratio : ratios)
        derived.append(QJsonObject{{"name", QString::fromStdString(ratio.name)}, {"value", ratio.value},
            {"aim", ratio.aim}, {"noise", ratio.noise}, {"missed", ratio.isMissed()}});
    QFile output(QString::fromStdString(file));
    if (!output.open(QIODevice::WriteOnly)) {
        std::fprintf(stderr, "%s: %s\n", file.c_str(), qPrintable(output.errorString()));
        return;
    }
    output.write(QJsonDocument(QJsonObject{{"samples", measured}, {"ratios", derived}}).toJson());
}

} // namespace oz::bench
