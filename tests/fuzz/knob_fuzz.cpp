#include "controls/knob.h"
#include "fuzz/fuzzing.h"
#include "oracle/ini_values.h"
#include "random/hands.h"
#include "random/record.h"

#include <QLineEdit>

#include <algorithm>

// Typed input: two bytes choose range and offset as the panels have them, the others are typed
// into the editor, as text of one byte a letter or two, and ended by Enter. The value must be the
// number that was typed, within the range, or else the old one, and be announced once.

namespace {

struct Range
{
    int minimum;
    int maximum;
    int offset;
};

constexpr Range ranges[] = {{0, 51, 0}, {-80, 6, 0}, {0, 51, 9}, {-80, 0, 0}, {0, 54, -8}};

QWidget* window = nullptr;
Knob* knob = nullptr;
int announced = 0;

QString letters(const std::uint8_t* data, std::size_t size, bool wide)
{
    if (!wide)
        return QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QString text;
    for (std::size_t i = 0; i + 1 < size; i += 2)
        text += QChar(data[i] | data[i + 1] << 8);
    return text;
}

/// The number that the text means, in digits of any width, with or without the unit; the old one
/// when it is none.
long long meant(QString text, int old)
{
    text = text.normalized(QString::NormalizationForm_KC);
    if (text.endsWith(QLatin1String("dB")))
        text.chop(2);
    int number = old;
    Oracle::parseInt(text.toStdString(), number);
    return number;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv)
{
    Fuzzing::begin(*argc, *argv);
    window = new QWidget;
    knob = new Knob(window);
    window->resize(100, 100);
    knob->resize(80, 80);
    window->show();
    QObject::connect(knob, &Knob::valueChangedSig, knob, [](int) { ++announced; });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const Range& range = ranges[data[0] % std::size(ranges)];
    knob->minimum = range.minimum;
    knob->maximum = range.maximum;
    knob->displayOffset = range.offset;
    knob->setValue(range.minimum + data[1] % (range.maximum - range.minimum + 1));
    const int old = knob->value;
    Hands::activate(*window);
    knob->repaint();
    Hands::doubleClick(*knob, knob->rect().center());
    Fuzzing::require(knob->editor->isVisible(), "the editor opens");
    knob->editor->clear();
    Hands::type(*window, letters(data + 2, size - 2, data[1] >= 128));
    announced = 0;
    const QString typed = knob->editor->text();
    Hands::key(*window, Qt::Key_Return);
    Fuzzing::require(!knob->editor->isVisible(), "the editor closes");
    Fuzzing::require(announced == 1, "the value is announced once");
    const long long wanted = meant(typed, old) - range.offset;
    Record::takeEvents();
    Fuzzing::require(knob->value == std::clamp<long long>(wanted, range.minimum, range.maximum),
                     "the value is the one that was typed");
    return 0;
}
