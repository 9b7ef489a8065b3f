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
    xml.writeStartElement(u"testsuite"_s);
    xml.writeAttribute(u"name"_s, suite);
    xml.writeAttribute(u"tests"_s, QString::number(cases.size()));
    xml.writeAttribute(u"failures"_s, QString::number(failures));
    xml.writeAttribute(u"errors"_s, u"0"_s);
    xml.writeAttribute(u"time"_s, QString::number(seconds));
    for (const TestCase &each : cases) {
        xml.writeStartElement(u"testcase"_s);
        xml.writeAttribute(u"classname"_s, suite);
        xml.writeAttribute(u"name"_s, each.name);
        xml.writeAttribute(u"time"_s, QString::number(each.seconds));
        if (!each.problem.isEmpty()) {
            xml.writeStartElement(u"failure"_s);
            xml.writeAttribute(u"message"_s, each.problem);
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
        xml.writeStartElement(u"testsuites"_s);
        writeSuite(xml, suite, cases);
        xml.writeEndDocument();
        isWritten = !xml.hasError() && file.commit();
    }
    if (!isWritten)
        throw CommandError(Failed, fileName + ": "_L1 + file.errorString());
}

} // namespace oz::tools
