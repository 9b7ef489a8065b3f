#include "ozdevice/JUnitReport.hpp"

#include "facilities/CommandError.hpp"

#include <QSaveFile>
#include <QXmlStreamWriter>

namespace oz::tools {

namespace {

void writeSuite(QXmlStreamWriter &xml, const QString &suite, const std::vector<TestCase> &cases)
{
    int failures = 0;
    double seconds = 0;
    for (const TestCase &each : cases) {
        failures += each.problem.isEmpty() ? 0 : 1;
        seconds += each.seconds;
    }
    xml.writeStartElement(QStringLiteral("testsuite"));
    xml.writeAttribute(QStringLiteral("name"), suite);
    xml.writeAttribute(QStringLiteral("tests"), QString::number(cases.size()));
    xml.writeAttribute(QStringLiteral("failures"), QString::number(failures));
    xml.writeAttribute(QStringLiteral("errors"), QStringLiteral("0"));
    xml.writeAttribute(QStringLiteral("time"), QString::number(seconds));
    for (const TestCase &each : cases) {
        xml.writeStartElement(QStringLiteral("testcase"));
        xml.writeAttribute(QStringLiteral("classname"), suite);
        xml.writeAttribute(QStringLiteral("name"), each.name);
        xml.writeAttribute(QStringLiteral("time"), QString::number(each.seconds));
        if (!each.problem.isEmpty()) {
            xml.writeStartElement(QStringLiteral("failure"));
            xml.writeAttribute(QStringLiteral("message"), each.problem);
            xml.writeEndElement();
        }
        xml.writeEndElement();
    }
    xml.writeEndElement();
}

} // namespace

void writeJUnitReport(const QString &fileName, const QString &suite, const std::vector<TestCase> &cases)
{
    QSaveFile file(fileName);
    bool isWritten = file.open(QIODevice::WriteOnly);
    if (isWritten) {
        QXmlStreamWriter xml(&file);
        xml.setAutoFormatting(true);
        xml.writeStartDocument();
        xml.writeStartElement(QStringLiteral("testsuites"));
        writeSuite(xml, suite, cases);
        xml.writeEndDocument();
        isWritten = !xml.hasError() && file.commit();
    }
    if (!isWritten)
        throw CommandError(Failed, fileName + QLatin1String(": ") + file.errorString());
}

} // namespace oz::tools
