#pragma once

#include <cstddef>
#include <random>
#include <string>

/// Makes JSON documents at random, the same ones on every platform.
class RandomDocument
{
public:
    explicit RandomDocument(unsigned seed) : m_engine(seed) {}

    /// One that every JSON reader accepts and agrees on: no number near a bound, no fraction or
    /// exponent that is zero, no odd escape.
    std::string strict();
    /// One with this reader's own rules in play: bare names, vertical tabs, raw bytes, any number.
    /// It is a whole document, but need not be good.
    std::string odd();
    /// Pieces of documents in any order.
    std::string pieces();
    /// `document` with a few bytes deleted, doubled or changed.
    std::string damaged(std::string document);

    /// A number from 0 to bound - 1.
    std::size_t below(std::size_t bound) { return m_engine() % bound; }

private:
    void value(int depth);
    void array(int depth);
    void hash(int depth);
    void string();
    void strictCharacter();
    void oddCharacter();
    void escape(unsigned unit);
    void number();
    void digits(std::size_t count);
    void space();
    std::string finished();

    std::mt19937 m_engine;
    std::string m_text;
    bool m_odd = false;
};
