// fontconfig keeps parts of its configuration for the life of the process,
// allocated in ways LeakSanitizer reports as lost; every test that draws text
// through cairo or Pango would otherwise fail at exit. cairo 1.16 loses one
// buffer (768 bytes, realloc'd inside cairo itself) when it writes a large
// CJK font subset, whatever the caller does.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig.so\nleak:libcairo.so\n";
}
