#pragma once

#include <QString>

/// Keeps this process from writing a file and its folder while it lives, also when the tests run
/// as root.
class ReadOnly
{
public:
    explicit ReadOnly(const QString& file);
    ~ReadOnly();
    ReadOnly(const ReadOnly&) = delete;
    ReadOnly& operator=(const ReadOnly&) = delete;

private:
    QString path;
};
