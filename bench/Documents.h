#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// What the benchmarks build, read and write: the same facts as plain structures and as JSON text.
/// Both come from a generator with a fixed seed, so that every run and every library gets the same.

/// The addresses of a hosts document, an array of objects with the one key "hostname".
using Hosts = std::vector<std::string>;

struct Tray
{
    std::string name;
    long long capacity;
    long long level;
};

/// An element of a mixed document.
struct Device
{
    long long id;
    std::string name;        ///< UTF-8, not only ASCII
    std::string description; ///< with characters that JSON escapes
    bool online;
    double load;
    double temperature;
    double current; ///< small, written with an exponent
    std::string building;
    double latitude;
    double longitude;
    std::vector<long long> pages;
    std::vector<Tray> trays;
    std::vector<std::string> tags;
};
using Devices = std::vector<Device>;

/// Text of at least `bytes` bytes, and what it says. Its reals have at most six significant digits,
/// so that every library writes the same numbers.
template <typename Content>
struct Document
{
    Content content;
    std::string text;
};

Document<Hosts> makeHosts(std::size_t bytes);
Document<Devices> makeMixed(std::size_t bytes);
