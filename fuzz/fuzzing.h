#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>

/// Called with each input by the fuzzer, which also defines main(). Log lines go nowhere.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/// The input as bytes, valid as long as the input is.
QByteArray bytesOf(const std::uint8_t *data, std::size_t size);

/// Path of a regular file in memory that holds the input until the next call.
QString fileOf(const std::uint8_t *data, std::size_t size);
