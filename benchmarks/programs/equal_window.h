#pragma once

class QMainWindow;

/// Fills the window with Qt's own controls, as many, as large and styled as often as the KA2 panel
/// has them: dials for knobs, push buttons for buttons, labels.
void fillLikeKa2(QMainWindow& window);
