/* A caller in C11. */
#include <qxut23/qxut23.h>

#include <stdio.h>

int main(void)
{
    QXWCHAR text[] = u"Gr\u00fc\u00dfe 7";
    const QXWCHAR upper[] = u"GR\u00dc\u00dfE 7";
    UtilLocaleStrupr(text);
    if (UtilLocaleStrcmp(text, upper) != 0 || UtilGetLikelyCharsetFromString(u"\u0416") != 204)
    {
        puts("client.c: wrong result");
        return 1;
    }
    return 0;
}
