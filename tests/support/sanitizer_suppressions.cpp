// fontconfig keeps parts of its configuration for the life of the process,
// allocated in ways LeakSanitizer reports as lost; every test that draws text
// through cairo or Pango would otherwise fail at exit. cairo 1.16 loses one
// buffer (768 bytes, realloc'd inside cairo itself) when it writes a large
// CJK font subset, whatever the caller does. Qt's PDF view never frees the
// scroller it grabs, nor the threads of its page renderer. Qt is built
// without frame pointers, so the data of such a thread, allocated inside
// QtCore, is now and then reported with one QtCore frame and nothing above
// it that names its owner: leaks inside QtCore itself are let pass. libsrt,
// which FFmpeg loads with the media module, now and then is reported with an
// object its own code allocated and nothing of ours above it.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig.so\nleak:libcairo.so\nleak:QScroller::grabGesture\n"
           "leak:libQt6Pdf.so\nleak:QPdfPageRenderer\nleak:libQt6Core.so\n"
           "leak:libsrt-gnutls.so\n";
}
