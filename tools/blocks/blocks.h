// The blocks of a module's kernels as headers and as data: what each writer adds to the file.
#pragma once

#include "nodus/host/catalogue.h"

#include <string>
#include <string_view>
#include <vector>

namespace nodus::blocks {

// One block of a node type; a node type has two or three.
struct Block {
    std::string_view role;  // "In", "Workspace", "Out"
    std::string_view key;   // "in", as data names it
    std::vector<host::Port> const* ports;
    std::size_t extent;
};

// The blocks that have ports, in the order in which entry points take them.
std::vector<Block> blocksOf(host::NodeType const& type);

// The names of the entry points: the one that initialises the workspace first, if there is one.
std::vector<std::string> entryPointsOf(host::NodeType const& type);

// Lines of a comment, "// " in front, broken before column 100.
std::string comment(std::string const& text);

// "Float3 at 16, default 0; in rad; 0 uniform, 1 normal".
std::string portComment(host::Port const& port, Block const& block);

enum class Language { c, cpp };
// An initialiser for the value that an input has in a graph that does not give it.
std::string initializer(host::Port const& port, Language language);

std::string cHeader(host::Catalogue const& catalogue, std::string const& module);
std::string cppHeader(host::Catalogue const& catalogue, std::string const& module);
std::string json(host::Catalogue const& catalogue, std::string const& module);

}  // namespace nodus::blocks
