#pragma once

namespace tosvar {

// The one Qt application object of a test program (QCoreApplication or
// QApplication), made at first use and never destroyed: Qt's own global
// statics (the input device list among them) may already be gone when static
// destructors run, so tearing the application down at exit can crash.
template <typename Application>
Application& testApplication() {
    static int argc = 1;
    static char name[] = "tosvar-test";
    static char* argv[] = {name, nullptr};
    static Application* application = new Application(argc, argv);
    return *application;
}

} // namespace tosvar
