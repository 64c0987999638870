/* A C11 caller: creates a profile, saves it to the current folder, and reads it again. */
#include <qxut23/qxut23.h>

#include <stdio.h>

static const char file[] = "client_c.ini";
static const QXWCHAR path[] = u"Report/Title";
static const QXWCHAR title[] = u"Gr\u00fc\u00dfe";

static int write_profile(void)
{
    HPROFJOB job = ProfJobOpenW(NULL);
    ProfSetStringW(job, NULL, path, title);
    const int32_t result = ProfSaveA(job, file, PROF_FORM_TEXT);
    ProfJobClose(job);
    return result == PROF_OK;
}

static int read_profile(void)
{
    QXWCHAR value[16];
    HPROFJOB job = ProfJobOpenA(file);
    const int32_t length = ProfGetStringW(job, NULL, path, value, 16, NULL);
    ProfJobClose(job);
    return length == 5 && UtilStrcmp(value, title) == 0;
}

static int convert_markup(void)
{
    static const QXWCHAR html[] = u"<b>a</b>&lt;";
    static const QXWCHAR expected[] = u"a<";
    QXWCHAR* text = NULL;
    UtilConvertHtml2PlainText(html, &text, 0);
    const int same = SysStringLen(text) == 2 && UtilStrcmp(text, expected) == 0;
    SysFreeString(text);
    return same;
}

int main(void)
{
    if (!convert_markup())
    {
        puts("client.c: wrong text");
        return 1;
    }
    if (!write_profile() || !read_profile())
    {
        puts("client.c: the profile didn't come back");
        return 1;
    }
    return 0;
}
