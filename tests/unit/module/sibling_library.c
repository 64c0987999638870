/* What the tests take for a sibling library. */
#if defined(_WIN32)
#define EXPORTED __declspec(dllexport)
#else
#define EXPORTED __attribute__((visibility("default")))
#endif

EXPORTED int CtlJobOpenEx(void)
{
    return 23;
}

EXPORTED int CtlXlatPath(void)
{
    return 42;
}
