#include "display/Displays.hpp"

namespace oz::services {

namespace {

Column<Display> column(ValueType::Kind kind, const char *unit = "")
{
    return Columns<Display>::custom({kind, QString::fromUtf8(unit)}, {});
}

// A number of the tree that has a word.
Column<Display> column(const WordList<int> &words)
{
    return Columns<Display>::custom(
        {ValueType::Word, {}, wordsIn(words)}, {}, [&words](const QVariant &published) {
            return published.isValid() ? QVariant(wordFor(words, published.toInt())) : QVariant();
        });
}

} // namespace

const WordList<int> &displayKinds()
{
    static const WordList<int> words{
        {ScreenDisplayKind::Internal, "", "internal"}, {ScreenDisplayKind::External, "", "external"}};
    return words;
}

const WordList<int> &displayTechnologies()
{
    static const WordList<int> words{{0, "", "unknown"}, {1, "", "crt"}, {2, "", "lcd"}, {3, "", "plasma"},
        {4, "", "led"}, {5, "", "oled"}};
    return words;
}

const Fields<Display> &displayFields()
{
    static const Fields<Display> fields(DisplayTree::PpsPath,
        {
            {"name", "name", column(ValueType::Text), "its name"},
            {"kind", "type", column(displayKinds()), "whether it is built into the device"},
            {"attached", "attached", column(ValueType::Truth), "whether it is attached"},
            {"detachable", "detachable", column(ValueType::Truth), "whether it can be detached"},
            {"width", "width", column(ValueType::Number, "px"), "its native width"},
            {"height", "height", column(ValueType::Number, "px"), "its native height"},
            {"mm-width", "mm_width", column(ValueType::Number, "mm"), "its physical width; 0 for unknown"},
            {"mm-height", "mm_height", column(ValueType::Number, "mm"), "its physical height; 0 for unknown"},
            {"rotation", "rotation", column(ValueType::Number, "°"), "how far its picture is turned"},
            {"technology", "technology", column(displayTechnologies()), "the kind of panel"},
        },
        0644, Fields<Display>::Each);
    return fields;
}

} // namespace oz::services
