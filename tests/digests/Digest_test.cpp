// The same bits everywhere: digests of this compiler's builds beside each other, and beside those
// that are kept. After a change of results that is meant to be one:
//   cmake/build.sh portable && build/portable/bin/nodus digest >tests/digests/portable.txt
#include "support/process.h"

#include <fstream>
#include <map>
#include <sstream>

namespace {

struct Build {
    std::string name, file;

    bool isPortable() const { return DIGEST_ALL_PORTABLE || name == "nodusmath_portable"; }
    bool canRun() const
    {
        return name != "nodusmath_v3" ||
               (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma"));
    }
};
Build const kBuilds[] = {DIGEST_BUILDS};  // this build's own module first

struct Line {
    std::string group, digest;
};
using Digests = std::map<std::string, Line>;  // by family

Digests read(std::istream&& text)
{
    Digests digests;
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line);
        std::string family;
        Line rest;
        if (words >> family >> rest.group >> rest.digest && family != "all" && family != "#")
            digests[family] = rest;
    }
    return digests;
}

support::Finished digest(Build const& build, std::string const& seed = "1",
                         std::vector<std::string> command = {})
{
    for (char const* const word : {DIGEST_COMMAND, "--module", build.file.c_str(), "digest"})
        command.emplace_back(word);
    command.insert(command.end(), {"--seed", seed});
    return support::runProcess(command);
}

Digests digestsOf(Build const& build, std::string const& seed = "1")
{
    return read(std::istringstream(digest(build, seed).out));
}

}  // namespace

// With each other in all families; with what is kept in those that depend on nothing, or in all
// when the build is portable.
TEST(Digest, BuildsAgree)
{
    Digests const own = digestsOf(kBuilds[0]), kept = read(std::ifstream(DIGEST_KEPT));
    ASSERT_FALSE(kept.empty()) << DIGEST_KEPT;
    for (Build const& build : kBuilds) {
        if (!build.canRun())
            continue;
        Digests const digests = digestsOf(build);
        EXPECT_EQ(digests.size(), kept.size()) << build.name;
        for (auto const& [family, line] : digests) {
            std::string const where = family + " in " + build.name;
            ASSERT_TRUE(kept.contains(family)) << where << " is not kept";
            EXPECT_EQ(line.group, kept.at(family).group) << where;
            if (build.isPortable() || line.group == "exact") {
                EXPECT_EQ(line.digest, kept.at(family).digest) << where;
            }
            if (build.isPortable() == kBuilds[0].isPortable()) {
                EXPECT_EQ(line.digest, own.at(family).digest) << where;
            }
        }
    }
}

#ifdef DIGEST_EMULATOR
// An emulator estimates in its own way, and the C library takes other functions for a processor of
// 2008. Nothing else may differ, and in a portable build nothing at all.
TEST(Digest, AnotherProcessorAgrees)
{
    Digests const own = digestsOf(kBuilds[0]);
    auto const run = digest(kBuilds[0], "1", {DIGEST_EMULATOR, "-cpu", "Nehalem"});
    Digests const others = read(std::istringstream(run.out));
    ASSERT_EQ(others.size(), own.size()) << run.error;
    for (auto const& [family, line] : others)
        if (kBuilds[0].isPortable() || (line.group != "estimate" && line.group != "libm")) {
            EXPECT_EQ(line.digest, own.at(family).digest) << family;
        }
}
#endif

// Of every family, so that none is digested without its outputs.
TEST(Digest, AnotherSeedIsAnotherDigest)
{
    Digests const first = digestsOf(kBuilds[0]), second = digestsOf(kBuilds[0], "2");
    for (auto const& [family, line] : first)
        EXPECT_NE(line.digest, second.at(family).digest) << family;
    for (char const* const wrong : {"", "x", "-1", "1.5", "4294967296"})
        EXPECT_EQ(digest(kBuilds[0], wrong).exitStatus, 2) << wrong;
}
