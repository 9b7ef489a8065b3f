#pragma once

#include <QString>

#include <vector>

namespace oz::tools {

/*! A case of a test report. */
struct TestCase
{
    QString name;
    double seconds;
    QString problem; //!< empty if it passed
};

/*! Writes \a cases into \a fileName as a report of one suite, in the XML of JUnit; throws CommandError. */
void writeJUnitReport(const QString &fileName, const QString &suite, const std::vector<TestCase> &cases);

} // namespace oz::tools
