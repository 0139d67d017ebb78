#pragma once

// The entry of a benchmark that draws with Qt: an application object on the
// offscreen platform (or the one named) around Google Benchmark's run.
#include <QByteArray>
#include <benchmark/benchmark.h>

namespace tosvar {

template <typename Application>
int runQtBenchmarks(int argc, char** argv, const char* platform = "offscreen") {
    qputenv("QT_QPA_PLATFORM", platform);
    Application application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace tosvar
