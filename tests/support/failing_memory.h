#pragma once

namespace corvane::test {

/// While it lives, one allocation of this thread fails: the one that `allowed` others went before.
class FailingMemory {
public:
    explicit FailingMemory(long long allowed);
    ~FailingMemory();

    bool HasFailed() const;
};

} // namespace corvane::test
