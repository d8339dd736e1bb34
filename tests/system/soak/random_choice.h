#pragma once

#include <QString>
#include <QStringList>

#include <initializer_list>
#include <random>

/// Draws from one seed.
class RandomChoice
{
public:
    explicit RandomChoice(unsigned seed)
        : random(seed)
    {
    }

    /// From 0 on.
    int below(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }
    bool chance(int percent) { return below(100) < percent; }
    QString oneOf(std::initializer_list<const char*> words)
    {
        return QString::fromUtf8(words.begin()[below(static_cast<int>(words.size()))]);
    }
    QString number(int bound) { return QString::number(below(bound)); }

private:
    std::mt19937 random;
};
