// Defaults of the sanitizers for the unit tests, read by the sanitizer runtime at start-up when the
// tests are built with it (otherwise these functions are never called). They match tests/lsan.supp,
// which the end-to-end runs get through the environment: the audio back ends that miniaudio probes
// on a machine without a sound server leak at start-up, in third-party code.

extern "C" char const* __asan_default_options() { return "fast_unwind_on_malloc=0"; }

extern "C" char const* __lsan_default_suppressions() { return "leak:libpulse.so\nleak:_dl_init\n"; }
