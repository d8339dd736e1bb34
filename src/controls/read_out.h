#pragma once

#include <QLabel>

/// A label whose text changes all the time. Screen readers read it with its accessible name when
/// they come to it, and are not told of each change. GUI thread only.
class ReadOut : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;
};
