#pragma once

#include <QString>

#include <memory>

// Refusals that hold while an object lives, also when the tests run as root. One at a time.

/// Keeps this process from writing a file and its folder.
class ReadOnly
{
public:
    explicit ReadOnly(const QString& file);
    ~ReadOnly();
    ReadOnly(const ReadOnly&) = delete;
    ReadOnly& operator=(const ReadOnly&) = delete;

private:
    struct Refusal;
    std::unique_ptr<Refusal> refusal;
};

/// Keeps this process from opening a file that is there, as another program does that has it for
/// itself.
class Unreadable
{
public:
    explicit Unreadable(const QString& file);
    ~Unreadable();
    Unreadable(const Unreadable&) = delete;
    Unreadable& operator=(const Unreadable&) = delete;

private:
    struct Refusal;
    std::unique_ptr<Refusal> refusal;
};
