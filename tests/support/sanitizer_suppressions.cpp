// fontconfig keeps parts of its configuration for the life of the process,
// allocated in ways LeakSanitizer reports as lost; every test that draws text
// through cairo or Pango would otherwise fail at exit.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig.so\n";
}
