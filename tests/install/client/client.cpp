// A caller in C++17.
#include <qxut23/qxut23.h>

#include <cstdio>
#include <string>

int main()
{
    using Text = std::basic_string<QXWCHAR>;
    const char letters[] = "Profile";
    Text text(std::begin(letters), std::end(letters) - 1);
    UtilLocaleStrlwr(text.data());
    if (text[0] != 'p' ||
        UtilLocaleStricmp(text.c_str(), Text(std::begin(letters), std::end(letters) - 1).c_str()) != 0)
    {
        std::puts("client.cpp: wrong result");
        return 1;
    }
}
