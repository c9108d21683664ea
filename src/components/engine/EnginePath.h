#pragma once

#include <QString>

namespace vmk::engine
{

// The one place where the engine turns a path of the drive-letter namespace
// ("E:\dir\file") into the host path it opens.
QString NativePathOf(const QString& logicalPath);

} // namespace vmk::engine
