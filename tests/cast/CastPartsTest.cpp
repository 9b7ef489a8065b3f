// The parts of ozcast that read what displays send.

#include "DisplayControl.hpp"
#include "RtspMessage.hpp"
#include "VideoFormats.hpp"
#include "harness/Testing.hpp"

using namespace oz::cast;

namespace {

QString textOf(const RtspMessage &message)
{
    const QByteArray start = message.isRequest() ? message.method + ' ' + message.target
                                                 : QByteArray::number(message.status) + ' ' + message.reason;
    return start + ' ' + QString::number(message.sequence()) + ' ' + message.body;
}

// What a reader makes of bytes, or its problem.
QString readingOf(const QByteArray &bytes, qsizetype portion)
{
    RtspReader reader;
    QStringList messages;
    for (qsizetype i = 0; i < bytes.size(); i += portion) {
        reader.feed(bytes.mid(i, portion));
        while (const auto message = reader.next()) {
            messages.append(textOf(*message));
            RtspReader again;
            again.feed(message->toBytes());
            const auto same = again.next();
            EXPECT_EQ(same ? textOf(*same) : again.problem(), messages.back()) << "what is written is read";
        }
    }
    return reader.problem().isEmpty() ? messages.join(" | ") : reader.problem();
}

TEST(RtspMessageTest, IsReadInPortionsOfAnySize)
{
    const std::pair<QByteArray, QString> rows[] = {
        {"OPTIONS * RTSP/1.0\r\nCSeq: 1\r\n\r\n", "OPTIONS * 1 "},
        {"OPTIONS * RTSP/1.0\ncseq:1\n\n", "OPTIONS * 1 "},
        {"\r\n\r\nRTSP/1.0 200 OK\r\nCSeq: 2\r\n\r\nRTSP/1.0 406 Not Acceptable\r\nCSeq: 3\r\n\r\n",
            "200 OK 2  | 406 Not Acceptable 3 "},
        {"RTSP/1.0 200\r\nCSeq: 2\r\nContent-Length: 4\r\n\r\nbodyOPTIONS * RTSP/1.0\r\n\r\n",
            "200  2 body | OPTIONS * -1 "},
        {"RTSP/1.0 200 OK\r\nCSeq: -2\r\n\r\n", "200 OK -1 "},
        {"RTSP/1.0 200 OK\r\nContent-Length: 10\r\n\r\nhalf", ""},
        {"GET / HTTP/1.1\r\n\r\n", "it does not speak RTSP"},
        {"RTSP/1.0 9999 OK\r\n\r\n", "it does not speak RTSP"},
        {QByteArray("OPTIONS * RTSP/1.0\r\nX: \0\r\n\r\n", 28), "it does not speak RTSP"},
        {"OPTIONS *  RTSP/1.0\r\n\r\n", "it does not speak RTSP"},
        {"OPTIONS * RTSP/1.0\r\nX: 1\r\n folded\r\n\r\n", "a header of its message cannot be read"},
        {"OPTIONS * RTSP/1.0\r\nno colon\r\n\r\n", "a header of its message cannot be read"},
        {"RTSP/1.0 200 OK\r\nContent-Length: -1\r\n\r\n", "the length of its message cannot be read"},
        {"RTSP/1.0 200 OK\r\nContent-Length: 1\r\nContent-Length: 2\r\n\r\n",
            "the length of its message cannot be read"},
        {"RTSP/1.0 200 OK\r\nContent-Length: 65537\r\n\r\n", "the body of its message is longer than 64 KiB"},
        {"RTSP/1.0 200 OK\r\nX: " + QByteArray(16 * 1024, 'x') + "\r\n\r\n",
            "its header is longer than 16 KiB"},
    };
    for (const auto &[bytes, reading] : rows) {
        for (const qsizetype portion : {qsizetype(1), qsizetype(7), bytes.size()})
            EXPECT_EQ(readingOf(bytes, portion), reading) << bytes.left(60).toStdString();
    }
}

TEST(VideoFormatsTest, TheLargestModeThatTheScreenFillsIsChosen)
{
    // NATIVE PREF, then for each codec PROFILE LEVEL CEA VESA HH and what is not looked at.
    const QByteArray rest = " 00 0000 0000 00 none none";
    struct Row
    {
        QByteArray formats;
        QSize screen;
        QByteArray choice; // up to the lists
    };
    const Row rows[] = {
        {"40 00 01 10 000001e1 00000000 00000000" + rest, {1920, 1080},
            "38 00 01 04 00000080 00000000 00000000"},
        {"40 00 01 10 000001e1 00000000 00000000" + rest, {1366, 768},
            "28 00 01 01 00000020 00000000 00000000"},
        {"40 00 01 10 000001e1 00000000 00000000" + rest, {720, 1280},
            "28 00 01 01 00000020 00000000 00000000"},
        {"40 00 01 10 00000141 00000000 00000000" + rest, {1920, 1080},
            "40 00 01 10 00000100 00000000 00000000"},
        {"40 00 01 01 000001e1 00000000 00000000" + rest, {1920, 1080},
            "28 00 01 01 00000020 00000000 00000000"},
        {"00 00 01 01 00000001 04000000 00000000" + rest, {1920, 1200},
            "00 00 01 01 00000001 00000000 00000000"},
        {"00 00 01 08 00000001 14000000 00000000" + rest, {1920, 1200},
            "d1 00 01 04 00000000 04000000 00000000"},
        {"00 00 01 01 00000001 00000000 00000040" + rest, {480, 320},
            "32 00 01 01 00000000 00000000 00000040"},
        {"00 00 02 10 00000180 00000000 00000000" + rest + ", 01 01 00000021 00000000 00000000" + rest,
            {1920, 1080}, "28 00 01 01 00000020 00000000 00000000"},
        {"00 00 01 01 00000214 00000000 00000000" + rest, {1920, 1080}, {}}, // interlaced ones alone
        {"00 00 02 01 00000021 00000000 00000000" + rest, {1920, 1080}, {}}, // another profile alone
        {"none", {1920, 1080}, {}},
        {"", {1920, 1080}, {}},
        {"00 00 01 01 sausages 00000000 00000000" + rest, {1920, 1080}, {}},
        {"00 00 01 01 00000001", {1920, 1080}, {}},
    };
    for (const Row &row : rows) {
        const auto choice = chooseVideo(parseVideoFormats(row.formats), row.screen);
        EXPECT_EQ(choice ? choice->toParameter() : QByteArray(),
            row.choice.isEmpty() ? row.choice : row.choice + rest)
            << row.formats.toStdString();
    }
    EXPECT_TRUE(offersAac("LPCM 00000003 00, AAC 00000001 00"));
    for (const char *none : {"LPCM 00000003 00", "AAC 00000002 00", "none", "", "AAC"})
        EXPECT_FALSE(offersAac(none)) << none;
}

TEST(DisplayControlTest, MessagesAreThoseOfMiracastOverInfrastructure)
{
    const DisplayControl::Source source{"Ab", QByteArray::fromHex("00112233445566778899aabbccddeeff"), 7236};
    EXPECT_EQ(DisplayControl::messageOf(DisplayControl::Command::SourceReady, source).toHex(),
        "0023"
        "01"
        "01"
        "00"
        "0004"
        "41006200"
        "02"
        "0002"
        "1c44"
        "03"
        "0010"
        "00112233445566778899aabbccddeeff");
    EXPECT_EQ(DisplayControl::messageOf(DisplayControl::Command::StopProjection, source).toHex(),
        "001e"
        "01"
        "02"
        "00"
        "0004"
        "41006200"
        "03"
        "0010"
        "00112233445566778899aabbccddeeff");
}

} // namespace
