#pragma once

#include <QImage>
#include <QString>

class QWidget;

/// How far two pictures may differ and still count as the same: fonts are rasterised a little
/// differently from one font library to the next.
struct ImageTolerance
{
    /// A pixel differs when one of its channels is more than this away, 0 to 255.
    int channel = 24;
    /// Share of differing pixels that is accepted, 0 to 1.
    double share = 0.001;
};

/// The outcome of a comparison: `text` says what is wrong and which files show it, and is empty
/// when `same`.
struct ImageVerdict
{
    bool same = false;
    QString text;
};

/// Replaces the product's font by one that every test machine has. Call it once, before the
/// first picture. Returns what is missing, or nothing.
QString pinFont();

/// Draws `widget` with its children on the dark background of the panels (#2c313c), with
/// `pixelRatio` device pixels per pixel. The widget need not be shown; give it its size first.
QImage renderOnPanel(QWidget& widget, double pixelRatio);

/// Compares `actual` with the picture `name`.png of the baselines. A missing baseline and one of
/// another size differ. On a difference, writes `name`-actual.png and `name`-difference.png (the
/// differing pixels in white) beside the test program.
///
/// With QUORVEL_UPDATE_BASELINES=1 in the environment, takes `actual` as the new baseline
/// instead, unless the present one is the same within the tolerance.
ImageVerdict compareWithBaseline(const QImage& actual, const QString& name,
                                 ImageTolerance tolerance = {});

/// The same with baselines from `folder`.
ImageVerdict compareWithBaseline(const QImage& actual, const QString& name, const QString& folder,
                                 ImageTolerance tolerance);
