// A host in C++ that links the module: its kernels are functions of typed blocks.
#include <nodus/runtime/EvaluationScope.h>
#include <nodusmath/blocks.hpp>

#include <cstdio>
#include <string>

using namespace nodusmath::blocks;

struct Printer : nodus::runtime::LogService {
    void message(char const* text) override { std::puts(text); }
};

int main()
{
    Printer printer;
    nodus::runtime::LocalServiceTable services;
    services.log = &printer;
    nodus::runtime::EvaluationScope scope(0, &services);

    RandomGenerator_Float::In const draw{.seed = 7, .range = 2};  // the others are as in a graph
    RandomGenerator_Float::Workspace workspace;
    RandomGenerator_Float::Out drawn;
    RandomGenerator_Float::init(draw, workspace);
    LogValueFloat::In told{.prefix = nodus::String(std::string("drawn "))};
    LogValueFloat::Out same;
    for (int frame = 1; frame <= 3; ++frame) {
        scope.setFrame(frame);
        RandomGenerator_Float::solve(draw, workspace, drawn);
        told.value = drawn.result;
        LogValueFloat::solve(told, same);
    }
}
