// Builds a document from values, writes it as JSON, reads it back and asks it questions.

#include "value/Value.h"

#include <iostream>
#include <sstream>

int main()
{
    const Value::Hash laser = {{"hostname", Value("192.0.2.9")},
                               {"pages", Value(21500)},
                               {"duplex", Value(true)},
                               {"contact", Value()}};
    const Value document(Value::Array{Value(laser)});

    const std::string text = document.to_json();
    std::cout << text << "\n";

    std::istringstream stream(text);
    const Value read = Value::parse_json(stream);
    if (read.kind() != Value::Kind::Array) {
        std::cerr << "not a document\n"; // what cannot be read is nil
        return 1;
    }
    for (const Value& entry : read.to_a()) {
        const Value::Hash printer = entry.to_h();
        std::cout << Value::lookup(printer, "hostname", Value("nowhere")).to_s() << " has printed "
                  << Value::lookup(printer, "pages", Value(0)).to_i() << " pages; location: "
                  << Value::lookup(printer, "location", Value("unknown")).to_s() << "\n";
    }
    return read.to_json() == text ? 0 : 1;
}
