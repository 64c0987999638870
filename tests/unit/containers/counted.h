#pragma once

#include <stdexcept>

// An element that knows how many of its kind live, and whose copies can be made to fail.
class Counted
{
public:
    static inline int living = 0;
    static inline int copiesUntilFailure = -1; // never

    Counted(int n = 0) : _value(n) { ++living; }
    Counted(const Counted& other) : _value(other._value)
    {
        if (copiesUntilFailure == 0)
            throw std::runtime_error("copy");
        if (copiesUntilFailure > 0)
            --copiesUntilFailure;
        ++living;
    }
    Counted& operator=(const Counted&) = default;
    ~Counted() { --living; }

    int Value() const { return _value; }
    friend bool operator==(const Counted& a, const Counted& b) { return a._value == b._value; }
    friend bool operator<(const Counted& a, const Counted& b) { return a._value < b._value; }

private:
    int _value;
};

// Lets the copy after so many others fail, for as long as it lives.
class FailingCopies
{
public:
    explicit FailingCopies(int after) { Counted::copiesUntilFailure = after; }
    FailingCopies(const FailingCopies&) = delete;
    FailingCopies& operator=(const FailingCopies&) = delete;
    ~FailingCopies() { Counted::copiesUntilFailure = -1; }
};
