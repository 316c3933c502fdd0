// Settings for the leak checker in sanitizer builds of the tests. The audio back ends that the sound
// system's engine opens (PulseAudio and the libraries it loads) keep allocations for the life of the
// process; they are not the project's and are left out of the report.
#if defined(__SANITIZE_ADDRESS__)
extern "C" char const* __lsan_default_suppressions() { return "leak:libpulse.so\n"; }
#endif
