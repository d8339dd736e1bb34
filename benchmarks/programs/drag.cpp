#include "controls/knob.h"
#include "panels/ka2.h"

#include <QApplication>
#include <QMainWindow>
#include <QMouseEvent>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

namespace {

constexpr const char* key = "Dial/SpeakerValue";

/// The X server stamps events by this clock.
long long now()
{
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// Tells for each move of the pointer over the knob how long after it was made its work was done.
class Application : public QApplication
{
public:
    using QApplication::QApplication;
    const Knob* knob = nullptr;

    bool notify(QObject* receiver, QEvent* event) override
    {
        const QEvent::Type type = event->type();
        const bool isMove = receiver == knob && type == QEvent::MouseMove;
        const auto made = isMove ? static_cast<QMouseEvent*>(event)->timestamp() : 0;
        const bool result = QApplication::notify(receiver, event);
        if (isMove) {
            std::fprintf(stderr, "move %lld\n", now() - static_cast<long long>(made));
        } else if (receiver == knob && type == QEvent::MouseButtonRelease) {
            std::fprintf(stderr, "released\n");
            exit(0);
        }
        return result;
    }
};

} // namespace

/// benchmark-drag: shows the KA2's panel, prints where its speaker volume is, and for each move of
/// a drag there the milliseconds until it was stored and sent; all on the standard error stream.
int main(int argc, char** argv)
{
    Application application(argc, argv);
    QMainWindow window;
    window.setStyleSheet(QStringLiteral("QMainWindow { background-color: #2c313c; }"));
    auto* panel = new ka2;
    window.setCentralWidget(panel);
    window.show();
    for (int turn = 0; turn < 100; ++turn)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    application.knob = panel->findChild<Knob*>(QLatin1String(key));
    const QPoint place = application.knob->mapToGlobal(application.knob->rect().center());
    std::fprintf(stderr, "ready %d %d\n", place.x(), place.y());
    return QApplication::exec();
}
