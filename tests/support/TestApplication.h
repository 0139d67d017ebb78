#pragma once

namespace tosvar {

// The one Qt application object of a test program (QCoreApplication or
// QApplication), made at first use and kept until exit.
template <typename Application>
Application& testApplication() {
    static int argc = 1;
    static char name[] = "tosvar-test";
    static char* argv[] = {name, nullptr};
    static Application application(argc, argv);
    return application;
}

} // namespace tosvar
