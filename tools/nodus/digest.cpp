// nodus digest: whether two machines, compilers or builds compute the same bits.
#include "environment.h"

#include "nodus/host/diagnostics.h"
#include "nodus/host/digest.h"
#include "nodus/host/literals.h"

namespace nodus::tools {

namespace {

int digest(std::string const& seedText, Shared const& shared)
{
    std::uint32_t seed = 0;
    std::string const wrong = host::readNumber(seedText, host::valueType(host::TypeId::UInt32),
                                               reinterpret_cast<std::byte*>(&seed));
    if (!wrong.empty())
        throw host::Fault("--seed: " + wrong);
    Environment const environment(modulePaths(shared));
    print(host::digestReport(environment.catalogue(), seed));
    return 0;
}

}  // namespace

Command addDigest(CLI::App& app, Shared const& shared)
{
    CLI::App* const command =
        app.add_subcommand("digest", "Digest what every kernel answers to generated inputs");
    auto const seed = std::make_shared<std::string>("1");
    command
        ->add_option("--seed", *seed,
                     "Which inputs are generated: a whole number up to 4294967295. Without it: 1.")
        ->type_name("N");
    command->footer(
        "A line for each family: its name, what its bits depend on, and a 64-bit FNV-1a hash of\n"
        "its outputs and log messages. What is marked exact is the same on every machine;\n"
        "estimate depends on the processor, libm and rand on the C library, but in a portable\n"
        "build only rand does. The last lines stand for each of these groups and for all.\n\n"
        "Example:\n  nodus digest >here.txt; diff here.txt there.txt\n\n"
        "Exit status:\n"
        "  0  the digests are printed\n"
        "  2  the seed is wrong, or a module cannot be loaded");
    return {command, [seed, &shared] { return digest(*seed, shared); }};
}

}  // namespace nodus::tools
