// A wireless display as a program, for those who try out a cast by hand, and for the machine with simulated
// radios.
#include "cast/TestSink.hpp"

#include <QCoreApplication>
#include <QFile>
#include <QTimer>

#include <cstdio>

// sink ADDRESS [CONTROL-PORT]: at this address; where a port is given it is told there to connect.
// sink ADDRESS SOURCE:PORT [MODES]: connects to a source by itself, again and again until it is there, as on
// the air; with the modes that it has as bits of the CEA table.
// Where SINK_STREAM is set, what it has received is in that file.
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() < 2 || words.size() > 4) {
        std::fprintf(stderr, "usage: sink ADDRESS [CONTROL-PORT | SOURCE:PORT [MODES]]\n");
        return 2;
    }
    const QString source = words.value(2).contains(u':') ? words[2] : QString();
    oz::harness::TestSink sink(words[1], source.isEmpty() ? words.value(2).toUShort() : quint16(0));
    if (words.size() > 3)
        sink.formats = "00 00 01 01 " + words[3].toLatin1() + " 00000000 00000000 00 0000 0000 00 none none";
    std::printf("control port %d\n", sink.controlPort());
    qsizetype told = 0;
    qsizetype packets = 0;
    QTimer timer;
    timer.callOnTimeout([&] {
        for (; told < sink.heard().size(); ++told)
            std::printf("%s\n", qPrintable(sink.heard()[told]));
        if (sink.packets() != packets)
            std::printf("%lld packets, %lld key frames\n", qint64(packets = sink.packets()),
                qint64(sink.keyFrames()));
        if (!sink.packetProblem().isEmpty())
            std::printf("wrong: %s\n", qPrintable(sink.packetProblem()));
        std::fflush(stdout);
        if (QFile stream(qEnvironmentVariable("SINK_STREAM"));
            !stream.fileName().isEmpty() && stream.open(QIODevice::WriteOnly))
            stream.write(sink.stream());
        if (!source.isEmpty() && !sink.isConnected())
            sink.connectToSource(source.section(u':', 1).toUShort(), source.section(u':', 0, 0));
    });
    timer.start(500);
    return QCoreApplication::exec();
}
