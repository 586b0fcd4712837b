// Measurements by Google Benchmark. Its packaged library has the compiler's default string ABI, the
// project has the other one: here they meet, and no std::string passes.
//
// A benchmark is a file that defines benchmarks() and has a line in CMakeLists.txt and one in run.
#pragma once

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

namespace nodus::bench {

// What is done again and again while the clock runs.
using Work = std::function<void()>;

struct Fact {
    char const* name;
    double value;
};

struct Details {
    std::string_view beside = {};  // the measurement that this one is a ratio over, if any
    std::size_t calls = 1;         // in one Work: times are those of one call
    bool onTheWall = false;        // the clock on the wall counts, not the processor's time
    std::vector<Fact> facts = {};  // handed on to who reads the results
};

// Adds a measurement, named "GROUP/ROW/COLUMN" for the tables that are made of it. There is a Work
// for each thread.
void add(std::string_view name, std::vector<Work> const& threads, Details const& details = {});

// Makes all measurements that were added, as the options of the command line say.
void measure();

using Arguments = std::vector<char const*>;

// Adds and makes the measurements of a program: its main function. Given are the arguments that are
// no options of Google Benchmark. May throw what is derived from std::exception.
void benchmarks(Arguments const& arguments);

}  // namespace nodus::bench
