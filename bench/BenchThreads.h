// Threads for OpenMP and OpenCV alike for one benchmark, restored afterwards.
#pragma once

#include <omp.h>

#include <opencv2/core.hpp>

namespace talonvireo {
namespace bench {

struct Threads {
    explicit Threads(int n) : omp(omp_get_max_threads()), cv(cv::getNumThreads()) {
        omp_set_num_threads(n);
        cv::setNumThreads(n);
    }
    ~Threads() {
        omp_set_num_threads(omp);
        cv::setNumThreads(cv);
    }
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;
    int omp, cv;
};

}  // namespace bench
}  // namespace talonvireo
