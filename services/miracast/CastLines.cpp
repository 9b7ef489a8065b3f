#include "miracast/CastLines.hpp"

#include "linux/NetworkAddresses.hpp"

#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>

#include <limits>

namespace oz::services::CastLines {

namespace {

constexpr qsizetype LongestText = 500; // characters of a text for people
constexpr qsizetype LongestWord = 64;
constexpr int LongestStep = 120'000; // milliseconds
constexpr int MostPixels = 65'535; // of a side

// Reads the values of a line's object, and keeps the first problem.
class Values
{
public:
    Values(QString kind, QJsonObject object) : m_kind(std::move(kind)), m_object(std::move(object)) { }

    [[nodiscard]] const QString &problem() const { return m_problem; }

    [[nodiscard]] bool has(const QString &name) const { return m_object.contains(name); }
    int integer(const QString &name, int least, int most)
    {
        const QJsonValue value = m_object.value(name);
        // Fractions and numbers beyond the range of int give the default.
        const int number = value.toInt(least - 1);
        if (!value.isDouble() || number < least || number > most)
            expect(name, QStringLiteral("a number in range"));
        return number;
    }
    int id() { return integer(QStringLiteral("id"), 1, std::numeric_limits<int>::max()); }

    QString text(const QString &name)
    {
        const QJsonValue value = m_object.value(name);
        if (!value.isString())
            expect(name, QStringLiteral("a text"));
        return value.toString().left(LongestText);
    }
    // One word of a program, empty for none.
    QString word(const QString &name)
    {
        const QString word = text(name);
        if (word.size() > LongestWord)
            expect(name, QStringLiteral("a short text"));
        return word;
    }
    QStringList addresses(const QString &name)
    {
        if (!m_object.value(name).isArray())
            expect(name, QStringLiteral("a list of addresses"));
        QStringList addresses;
        const QJsonArray list = m_object.value(name).toArray();
        for (const auto &each : list) {
            if (!isIpv4(each.toString()))
                expect(name, QStringLiteral("a list of addresses"));
            addresses.append(each.toString());
        }
        return addresses;
    }
    template <typename Value>
    Value oneOf(const QString &name, const QMap<QString, Value> &words)
    {
        const auto found = words.find(m_object.value(name).toString());
        if (found != words.end())
            return *found;
        expect(name, QLatin1String("one of ") + words.keys().join(u' '));
        return {};
    }

private:
    void expect(const QString &name, const QString &what)
    {
        if (m_problem.isEmpty())
            m_problem = u'\'' + name + QLatin1String("' of '") + m_kind + QLatin1String("' is not ") + what;
    }

    QString m_kind;
    QJsonObject m_object;
    QString m_problem;
};

Line helloOf(Values &values)
{
    return Hello{values.integer(QStringLiteral("version"), 1, 1'000), values.word(QStringLiteral("capture")),
        values.text(QStringLiteral("capture-remark")), values.word(QStringLiteral("encoder")),
        values.word(QStringLiteral("audio")), values.text(QStringLiteral("missing"))};
}

Line probedOf(Values &values)
{
    return Probed{values.id(), values.addresses(QStringLiteral("accepting"))};
}

Line stepOf(Values &values)
{
    Step step{values.id(), values.text(QStringLiteral("text"))};
    const QString limit = QStringLiteral("limit-ms");
    if (values.has(limit))
        step.limit = std::chrono::milliseconds(values.integer(limit, 1, LongestStep));
    return step;
}

Line playingOf(Values &values)
{
    return Playing{values.id(),
        {values.integer(QStringLiteral("width"), 1, MostPixels),
            values.integer(QStringLiteral("height"), 1, MostPixels)}};
}

Line pausedOf(Values &values)
{
    return Paused{values.id()};
}

Line endedOf(Values &values)
{
    using Why = Ended::Why;
    static const QMap<QString, Why> words{{QStringLiteral("asked"), Why::Asked},
        {QStringLiteral("sink"), Why::Sink}, {QStringLiteral("lost"), Why::Lost},
        {QStringLiteral("refused"), Why::Refused}, {QStringLiteral("failed"), Why::Failed}};
    return Ended{
        values.id(), values.oneOf(QStringLiteral("why"), words), values.text(QStringLiteral("text"))};
}

} // namespace

std::optional<Line> read(const QByteArray &line, QString *problem)
{
    static const QMap<QString, Line (*)(Values & values)> kinds{{QStringLiteral("hello"), helloOf},
        {QStringLiteral("probed"), probedOf}, {QStringLiteral("step"), stepOf},
        {QStringLiteral("playing"), playingOf}, {QStringLiteral("paused"), pausedOf},
        {QStringLiteral("ended"), endedOf}};
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(line, &error).object();
    if (object.size() != 1) {
        *problem = error.error == QJsonParseError::NoError
            ? QStringLiteral("a line is no object with one member")
            : error.errorString();
        return {};
    }
    const QString kind = object.begin().key();
    const auto found = kinds.find(kind);
    if (found == kinds.end())
        return Unknown{};
    Values values(kind, object.begin().value().toObject());
    Line read = (*found)(values);
    *problem = values.problem();
    return problem->isEmpty() ? std::optional(read) : std::nullopt;
}

QByteArray write(const QString &kind, const QJsonObject &values)
{
    return QJsonDocument(QJsonObject{{kind, values}}).toJson(QJsonDocument::Compact);
}

} // namespace oz::services::CastLines
