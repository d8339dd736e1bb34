#pragma once

#include <unistd.h>
#include <utility>

/// Owns one file descriptor, -1 when none.
class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor)
        : number(descriptor)
    {
    }
    FileDescriptor(FileDescriptor&& other) noexcept
        : number(std::exchange(other.number, -1))
    {
    }
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(number, other.number);
        return *this;
    }
    ~FileDescriptor() { reset(); }

    int get() const { return number; }
    bool isValid() const { return number >= 0; }
    void reset()
    {
        if (number >= 0)
            ::close(std::exchange(number, -1));
    }

private:
    int number = -1;
};
