#pragma once
// Files and documents of the model are counted references: a test's own reference ends
// with its scope, also when a check fails half-way through.
#include <memory>

struct Releaser
{
    template<typename T>
    void operator()(T *object) const
    {
        object->release();
    }
};

template<typename T>
using Held = std::unique_ptr<T, Releaser>;
