/* Plays the role of a sibling library in the tests. */
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
