// A host runtime that is not ours: the four things that modules take from a host, done differently.
// Built under the runtime's file name, and told nothing of its headers but the string handle.
#include "nodus/String.h"

#include <string>
#include <vector>

namespace substitute {

struct Record {
    std::string name;
    void const* entry;
};
NODUS_API std::vector<Record>& records()
{
    static std::vector<Record> all;
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
    char const* m_name;
};

NodusAutoSymbol::NodusAutoSymbol(char const* name, char const*, void const* entry) : m_name(name)
{
    substitute::records().push_back({name, entry});
}

// The last of the records, where they are destroyed in reverse; others stay.
NodusAutoSymbol::~NodusAutoSymbol()
{
    if (substitute::records().back().name == m_name)
        substitute::records().pop_back();
}

NODUS_API int GetCurrentFrame();
int GetCurrentFrame() { return substitute::g_frame; }

NODUS_API void* GetLocalServiceTable();
void* GetLocalServiceTable() { return substitute::g_services; }

}  // namespace nodus::runtime
