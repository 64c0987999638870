/* A library that the tests load by name. */
#if defined(_WIN32) /* each system has its own word for it */
#define PROBE_EXPORT __declspec(dllexport)
#else
#define PROBE_EXPORT __attribute__((visibility("default")))
#endif

PROBE_EXPORT int QxProbeAnswer(void)
{
    return 42;
}
