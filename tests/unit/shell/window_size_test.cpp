#include "support/test_main.h"
#include "window_stage.h"

#include <QTest>
#include <QWindow>

namespace {

constexpr std::uint32_t nothing = 0;
constexpr std::uint32_t firmwareUnread = 100; ///< the KA1 with the line below its panel
/// For windows that could be as large as they like; the toolkit knows it.
constexpr QSize smallest(200, 100);

} // namespace

/// The main window's size: that of its content, the user's from then on.
class WindowSizeTest : public QObject, private WindowStage
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void fitsItsContent_data();
    void fitsItsContent();
    void keepsTheUsersSize_data();
    void keepsTheUsersSize();
    void passingSizesAreNobodys();
    void maximisedStaysMaximised();
    void minimisedKeepsItsSize();

private:
    void resizeByHand(QSize size);
    void bring(std::uint32_t content);
};

/// As the window system reports a user who drags the window's frame: unlike QWidget::resize(),
/// that is no size set by the program.
void WindowSizeTest::resizeByHand(QSize size)
{
    window->windowHandle()->resize(size);
    settle();
    QCOMPARE(window->size(), size);
}

void WindowSizeTest::bring(std::uint32_t content)
{
    if (content == nothing) {
        simulated.control().unplug();
        log->clear();
        while (!log->lines().contains(QStringLiteral("Meter driver handle deleted.")))
            window->checkDevicePid();
        return;
    }
    if (content == firmwareUnread)
        simulated.control().fail(0xFFDC20A0, 1, 31);
    simulated.control().plug(content == firmwareUnread ? SimulatorControl::ka1 : content);
    window->detectDevice();
}

void WindowSizeTest::fitsItsContent_data()
{
    QTest::addColumn<bool>("shown");
    QTest::addColumn<bool>("hidden");
    QTest::newRow("never seen before") << false << true;
    QTest::newRow("in the tray") << true << true;
    QTest::newRow("in sight") << true << false;
}

void WindowSizeTest::fitsItsContent()
{
    QFETCH(const bool, shown);
    QFETCH(const bool, hidden);
    for (const std::uint32_t content : {2U, 15U, firmwareUnread, 1U, nothing}) {
        if (shown) {
            QVERIFY(show(*window));
        } else {
            init();
            bring(2);
        }
        window->setHidden(hidden);
        bring(content);
        settle();
        QVERIFY(show(*window));
        settle();
        QCOMPARE(window->size(), window->sizeHint().expandedTo(smallest));
        // Nothing in a panel can be squeezed.
        QCOMPARE(window->minimumSize(), window->sizeHint());
    }
}

void WindowSizeTest::keepsTheUsersSize_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("hidden");
    for (const bool hidden : {false, true}) {
        const QByteArray where = hidden ? "in the tray, " : "in sight, ";
        QTest::newRow(where + "wide") << QSize(780, 150) << hidden;
        QTest::newRow(where + "high") << QSize(200, 700) << hidden;
    }
}

/// What the content needs comes on top only while it is there.
void WindowSizeTest::keepsTheUsersSize()
{
    QFETCH(const QSize, size);
    QFETCH(const bool, hidden);
    QVERIFY(show(*window));
    resizeByHand(size);
    for (const std::uint32_t content : {2U, nothing, 7U, 7U}) {
        window->setHidden(hidden);
        bring(content);
        settle();
        QVERIFY(show(*window));
        settle();
        QCOMPARE(window->size(), size.expandedTo(window->sizeHint()));
    }
    QCOMPARE(window->size(), size);
}

/// As on the way to a screen of another scale.
void WindowSizeTest::passingSizesAreNobodys()
{
    QVERIFY(show(*window));
    settle();
    const QSize fitting = window->size();
    QCOMPARE(settlingTimes(*window), QList<int>());
    for (const QSize size : {QSize(780, 700), fitting}) {
        window->windowHandle()->resize(size);
        QCoreApplication::processEvents();
        QCOMPARE(window->size(), size);
        QCOMPARE(settlingTimes(*window), QList<int>{100});
    }
    settle();
    QCOMPARE(settlingTimes(*window), QList<int>());
    bring(2);
    bring(nothing);
    settle();
    QCOMPARE(window->size(), fitting);
}

void WindowSizeTest::maximisedStaysMaximised()
{
    QVERIFY(show(*window));
    window->showMaximized();
    settle();
    const QSize whole = window->size();
    QVERIFY(window->isMaximized() && whole.width() > 700);
    bring(2);
    settle();
    bring(nothing);
    settle();
    QVERIFY(window->isMaximized());
    QCOMPARE(window->size(), whole);
}

void WindowSizeTest::minimisedKeepsItsSize()
{
    QVERIFY(show(*window));
    resizeByHand({780, 700});
    window->showMinimized();
    bring(2);
    settle();
    bring(nothing);
    window->showNormal();
    settle();
    QCOMPARE(window->size(), QSize(780, 700));
}

QUORVEL_TEST_MAIN(WindowSizeTest)
#include "window_size_test.moc"
