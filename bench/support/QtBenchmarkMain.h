#pragma once

// The entry of a benchmark that draws with Qt: an application object on the
// offscreen platform around Google Benchmark's run.
#include <QByteArray>
#include <benchmark/benchmark.h>

namespace tosvar {

template <typename Application>
int runQtBenchmarks(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    Application application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

} // namespace tosvar
