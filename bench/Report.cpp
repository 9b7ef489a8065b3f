#include "Report.hpp"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
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

void print(const std::vector<Ratio> &ratios)
{
    for (const Ratio &ratio : ratios) {
        std::printf("  %-62s %6.2f", ratio.name.c_str(), ratio.value);
        if (ratio.aim > 0)
            std::printf("   (at most %.2f: %s)", ratio.aim, ratio.value <= ratio.aim ? "reached" : "MISSED");
        std::printf("\n");
    }
}

void writeJson(const std::string &file, const std::string &unit, const std::vector<Samples> &samples,
    const std::vector<Ratio> &ratios)
{
    QJsonArray measured;
    for (const Samples &one : samples) {
        measured.append(
            QJsonObject{{"name", QString::fromStdString(one.name)}, {"unit", QString::fromStdString(unit)},
                {"samples", qint64(one.values.size())}, {"median", one.median()},
                {"p10", one.percentile(0.1)}, {"p90", one.percentile(0.9)}, {"p99", one.percentile(0.99)}});
    }
    QJsonArray derived;
    for (const Ratio &ratio : ratios)
        derived.append(QJsonObject{
            {"name", QString::fromStdString(ratio.name)}, {"value", ratio.value}, {"aim", ratio.aim}});
    QFile output(QString::fromStdString(file));
    if (!output.open(QIODevice::WriteOnly)) {
        std::fprintf(stderr, "%s: %s\n", file.c_str(), qPrintable(output.errorString()));
        return;
    }
    output.write(QJsonDocument(QJsonObject{{"samples", measured}, {"ratios", derived}}).toJson());
}

} // namespace oz::bench
