#include "led/Led.hpp"

namespace oz::services {

namespace {

using Elements = LedState::Elements;

// An element is "on" or "off"; the colour that all of them show is read from the whole object.
Column<LedState> element(bool Elements::*member)
{
    return Columns<LedState>::custom({}, [member](const LedState &state) {
        return QVariant(state.lit.*member ? QStringLiteral("on") : QStringLiteral("off"));
    });
}

QVariant litColor(const QVariant &attributes)
{
    const QVariantMap elements = attributes.toMap();
    const auto isOn = [&](const char *name) {
        return elements.value(QLatin1String(name)) == QLatin1String("on");
    };
    if (!elements.contains(QStringLiteral("red")))
        return {};
    const QString color = wordFor(ledColors(), {isOn("red"), isOn("green"), isOn("blue")});
    return color.isEmpty() ? QStringLiteral("dark") : color;
}

} // namespace

const WordList<Elements> &ledColors()
{
    static const WordList<Elements> colors{
        {{true, false, false}, "red", "red"},
        {{false, true, false}, "green", "green"},
        {{false, false, true}, "blue", "blue"},
        {{true, true, false}, "yellow", "yellow"},
        {{false, true, true}, "cyan", "cyan"},
        {{true, false, true}, "magenta", "magenta"},
        {{true, true, true}, "white", "white"},
    };
    return colors;
}

const Fields<LedState> &ledFields()
{
    using C = Columns<LedState>;
    static const ValueType lit{
        ValueType::Word, {}, QStringList{QStringLiteral("dark")} + wordsIn(ledColors())};
    static const Fields<LedState> fields(QStringLiteral("/pps/services/led/status"),
        {
            {"", "red", element(&Elements::red), ""},
            {"", "green", element(&Elements::green), ""},
            {"", "blue", element(&Elements::blue), ""},
            {"lit", "", C::custom(lit, {}, litColor), "the colour that it shows; dark for none"},
        });
    return fields;
}

std::vector<AskedRequest> ledRequests()
{
    const ValueType color{ValueType::Word, {}, wordsIn(ledColors())};
    return {
        AskedRequest::named("flash", LedControl, "requestLED",
            "to flash; a count of -1 lasts until cancelled",
            {{QStringLiteral("color"), color},
                {QStringLiteral("count"), {ValueType::Number}, QStringLiteral("blinkCount")}}),
        AskedRequest::named("cancel", LedControl, "cancelLED", "to cancel a request"),
    };
}

} // namespace oz::services
