#pragma once

namespace MXF::SDK::Metadata::Structural
{
class ContentStorage;
class Preface;
} // namespace MXF::SDK::Metadata::Structural

namespace MXF::SDK::Metadata::Structural::PrefaceHelpers
{

// The preface's content storage. InvalidStructure "contentStorage != 0: Preface has no
// ContentStorage" when the reference is empty or leads to no ContentStorage.
ContentStorage& contentStorage(const Preface& preface);

} // namespace MXF::SDK::Metadata::Structural::PrefaceHelpers
