#pragma once

#include <string>
#include <vector>

namespace oz::bench {

/*! The arguments of a benchmark between processes: --json FILE and --rounds COUNT. */
struct RunOptions
{
    std::string json; //!< empty for no file
    int rounds = 4000;
};

[[nodiscard]] RunOptions runOptions(int argc, char **argv);

/*! Samples of one quantity, in one unit. */
struct Samples
{
    std::string name;
    std::vector<double> values;
    std::string unit = {}; //!< where it is another than that of the others of the run

    [[nodiscard]] double percentile(double share) const;
    [[nodiscard]] double median() const { return percentile(0.5); }
};

/*! A ratio that a run gave, and what it shall be at most (0: no aim). */
struct Ratio
{
    std::string name;
    double value = 0;
    double aim = 0;
    double noise = 0; //!< how far it strays within the run: the standard deviation from part to part

    /*! A ratio that could not be measured misses its aim too. */
    [[nodiscard]] bool isMissed() const { return aim > 0 && !(value - noise <= aim); }
};

/*!
 * The ratio of a percentile of two quantities that were measured in turns. The noise is that of its values in
 * the tenths of the run, each of which had the same of whatever else the machine did.
 */
[[nodiscard]] Ratio ratioOf(
    const std::string &name, const Samples &over, const Samples &under, double share, double aim);
/*! The standard deviation. */
[[nodiscard]] double deviation(const std::vector<double> &values);

/*! Prints the ratios and how they compare with their aims. True if there are any, and none misses its aim by
 * more than the noise. */
[[nodiscard]] bool print(const std::vector<Ratio> &ratios);

/*! Writes the samples' figures and the ratios to \a file. */
void writeJson(const std::string &file, const std::string &unit, const std::vector<Samples> &samples,
    const std::vector<Ratio> &ratios);

} // namespace oz::bench
