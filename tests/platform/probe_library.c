/* A library that the tests load by name. */
#if defined(_WIN32)
__declspec(dllexport)
#else
__attribute__((visibility("default")))
#endif
int QxProbeAnswer(void)
{
    return 42;
}
