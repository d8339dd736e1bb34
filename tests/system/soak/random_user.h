#pragma once

#include "system/desktop/desktop.h"
#include "system/soak/random_choice.h"

#include <QList>
#include <QString>

#include <optional>

/// Somebody who turns, clicks, drags and types whatever the panel shows, and its icon. Nothing
/// that they do has to lead anywhere.
class RandomUser
{
public:
    explicit RandomUser(RandomChoice& choice)
        : random(choice)
    {
    }

    void act();

    /// Puts away all that the panel shows. False when something stays.
    bool closeEverything();

private:
    void onPanel(const DesktopWindow& window);
    void onKnob(QPoint place);
    void onDialog(const DesktopWindow& window);
    void onIcon();
    void pressKey();
    void wheel(QPoint place, int mostNotches);
    void drag(QPoint from, QPoint to);
    /// A control of the panel, or any place in it.
    QPoint target(const DesktopWindow& window);
    QPoint anyPlace(const QRect& area);
    QString anyText();

    RandomChoice& random;
    std::optional<DesktopWindow> panel; ///< as seen last
    std::optional<DesktopWindow> dialog;
    QRect knownArea; ///< where the controls were found
    QList<QPoint> knobs;
    QList<QPoint> buttons;
};
