#include "benchmarks/programs/equal_window.h"

#include <QBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QSlider>

// The Qt that the Windows program comes with has no dials.
#if QT_CONFIG(dial)
#include <QDial>
#endif

namespace {

#if QT_CONFIG(dial)
using Dial = QDial;
#else
using Dial = QSlider;
#endif

QLabel* label(const char* text, const char* style)
{
    auto* made = new QLabel(QLatin1String(text));
    made->setStyleSheet(QLatin1String(style));
    made->setAlignment(Qt::AlignCenter);
    return made;
}

QAbstractSlider* dial(int size)
{
    auto* made = new Dial;
    made->setRange(-80, 6);
    made->setFixedSize(size, size);
    return made;
}

QPushButton* button(const char* text)
{
    auto* made = new QPushButton(QLatin1String(text));
    made->setStyleSheet(QStringLiteral("QPushButton { color: #8a95aa; background-color: #1b1e23;"
                                       " border-radius: 3px; }"));
    made->setFixedWidth(80);
    return made;
}

const char* const titleStyle = "font-weight: bold; font-size: 12px; color: white;";
const char* const captionStyle = "font-size: 12px; color: white;";
const char* const readOutStyle = "color: #888888; font-size: 8px;";

QLayout* inputStrip(const char* heading)
{
    auto* strip = new QVBoxLayout;
    strip->setContentsMargins(10, 10, 20, 10);
    strip->addWidget(label(heading, titleStyle));
    strip->addWidget(dial(120));
    strip->addWidget(label("-160 dB", readOutStyle));
    strip->addWidget(label("Gain", captionStyle));
    for (const char* text : {"20dB", "48V", "DIRECT"})
        strip->addWidget(button(text), 0, Qt::AlignHCenter);
    strip->addStretch();
    return strip;
}

QLayout* outputStrip(const char* heading)
{
    auto* strip = new QVBoxLayout;
    strip->setContentsMargins(20, 10, 10, 10);
    strip->addWidget(label(heading, titleStyle));
    strip->addWidget(dial(120), 0, Qt::AlignHCenter);
    strip->addWidget(label("Volume", captionStyle));
    auto* row = new QHBoxLayout;
    for (const char* text : {"MUTE", "DIM"}) {
        QPushButton* made = button(text);
        made->setMinimumHeight(40);
        row->addWidget(made);
    }
    strip->addLayout(row);
    strip->addWidget(dial(70), 0, Qt::AlignHCenter);
    strip->addWidget(label("-160 dB", readOutStyle));
    strip->addWidget(label("Phone", captionStyle));
    return strip;
}

} // namespace

void fillLikeKa2(QMainWindow& window)
{
    window.setStyleSheet(QStringLiteral("QMainWindow { background-color: #2c313c; }"));
    auto* central = new QWidget(&window);
    auto* root = new QHBoxLayout(central);
    for (const char* heading : {"MIC1", "MIC2"})
        root->addLayout(inputStrip(heading));
    for (const char* heading : {"SPEAKER", "HEADPHONE"})
        root->addLayout(outputStrip(heading));
    window.setCentralWidget(central);
}
