// A host runtime that is not ours: the four things that modules take from a host, done differently.
// Built under the runtime's file name, and told nothing of its headers but the string handle.
#include "nodus/String.h"

#include <string>
#include <vector>

namespace substitute {

struct Record {
    std::string name, signature;
    void const* entry;
};

NODUS_API std::vector<Record>& records()
{
    static std::vector<Record> all;
    return all;
}
NODUS_API std::vector<std::string>& removals()
{
    static std::vector<std::string> all;
    return all;
}
NODUS_API int g_frame = 0;
NODUS_API void* g_services = nullptr;

}  // namespace substitute

namespace nodus::runtime {

class NODUS_API NodusAutoSymbol {
public:
    NodusAutoSymbol(char const* name, char const* signature, void const* entry);
    ~NodusAutoSymbol();

private:
    std::size_t m_index;
    char const* m_name;
};

NodusAutoSymbol::NodusAutoSymbol(char const* name, char const* signature, void const* entry)
    : m_index(substitute::records().size()), m_name(name)
{
    substitute::records().push_back({name, signature, entry});
}

NodusAutoSymbol::~NodusAutoSymbol() { substitute::removals().push_back(m_name); }

NODUS_API int GetCurrentFrame();
int GetCurrentFrame() { return substitute::g_frame; }

NODUS_API void* GetLocalServiceTable();
void* GetLocalServiceTable() { return substitute::g_services; }

}  // namespace nodus::runtime
