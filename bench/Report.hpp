#pragma once

#include <string>
#include <vector>

namespace oz::bench {

/*! What a benchmark between processes is called with: --json FILE and --rounds COUNT. */
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

    [[nodiscard]] double percentile(double share) const;
    [[nodiscard]] double median() const { return percentile(0.5); }
};

/*! A ratio that a run gave, and what it shall be at most (0: no aim). */
struct Ratio
{
    std::string name;
    double value = 0;
    double aim = 0;
};

/*! Prints the ratios, with a mark where an aim is missed. */
void print(const std::vector<Ratio> &ratios);

/*! Writes the samples' figures and the ratios to \a file. */
void writeJson(const std::string &file, const std::string &unit, const std::vector<Samples> &samples,
    const std::vector<Ratio> &ratios);

} // namespace oz::bench
