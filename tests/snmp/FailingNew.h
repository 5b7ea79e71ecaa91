#pragma once

/// Makes operator new throw std::bad_alloc on this thread for a scope. A program that links it gets
/// a plain operator new over malloc in place of its own, so it should hold nothing else.
class FailingNew
{
public:
    FailingNew() noexcept;
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;

    /// False beside ThreadSanitizer's runtime for Clang, whose operator new cannot be replaced:
    /// then nothing fails here, and a test that depends on it has to skip itself.
    static bool supported() noexcept;
};
