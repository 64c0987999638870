// A C++17 caller that counts the entries of a list with a callback.
#include <qxut23/qxut23.h>

#include <cstdio>
#include <string>

namespace
{

using Text = std::basic_string<QXWCHAR>;

// Converts ASCII letters, because the character type of the literals differs between systems.
Text ToText(const char* letters)
{
    return Text(letters, letters + std::char_traits<char>::length(letters));
}

int32_t Collect(HPROFJOB, const QXWCHAR* name, const QXWCHAR* value, HPROFLIST, void* context)
{
    *static_cast<Text*>(context) += name + ToText("=") + value + ToText(";");
    return 1;
}

} // namespace

int main()
{
    const HPROFJOB job = ProfJobOpenW(nullptr);
    ProfSetStringA(job, nullptr, "Page/Width", "210");
    ProfSetStringA(job, nullptr, "Page/Height", "297");
    Text entries;
    const int32_t whole = ProfEnumW(job, ProfGetListA(job, nullptr, "Page"), Collect, &entries);
    ProfJobClose(job);
    if (whole != 1 || entries != ToText("Width=210;Height=297;"))
    {
        std::puts("client.cpp: wrong entries");
        return 1;
    }
}
