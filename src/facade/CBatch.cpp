#include "CBatch.h"

#include <memory>

namespace NSTQ::NSTQCore {
namespace {

/// Few enough that the buffers stay in the cache.
constexpr std::size_t defaultRows = 8192;
constexpr std::size_t maxSize = std::size_t{16} << 20;

/// What a struct owns: its children, which are released with it unless the caller has moved them away.
template <class TArrow>
struct SChildren {
    explicit SChildren(std::size_t count) : children(count) {
        pointers.reserve(count);
        for (TArrow& child : children)
            pointers.push_back(&child);
    }
    SChildren(const SChildren&) = delete;
    SChildren& operator=(const SChildren&) = delete;
    ~SChildren() {
        for (TArrow& child : children)
            if (child.release != nullptr)
                child.release(&child);
    }

    std::vector<TArrow> children;
    std::vector<TArrow*> pointers;
    const void* noBuffer = nullptr; ///< of an array: the validity bits, none of which is needed
};

template <class TArrow>
void Release(TArrow* parent) {
    delete static_cast<SChildren<TArrow>*>(parent->private_data);
    parent->release = nullptr;
}

/// A child may be moved out of its struct, so it owns its texts.
struct STexts {
    std::string format;
    std::string name;
};

void ReleaseTexts(ArrowSchema* schema) {
    delete static_cast<STexts*>(schema->private_data);
    schema->release = nullptr;
}

template <class TArrow>
void Adopt(TArrow& parent, std::unique_ptr<SChildren<TArrow>> owned) {
    parent.n_children = static_cast<std::int64_t>(owned->children.size());
    parent.children = owned->pointers.data();
    parent.release = &Release<TArrow>;
    parent.private_data = owned.release();
}

} // namespace

CBatch::CBatch(IRows& rows) : m_rows(rows) {
    for (const SColumn& column : rows.GetColumns())
        m_builders.emplace_back(column.form);
}

bool CBatch::Read(std::size_t maxRows, ArrowArray& array) {
    const std::size_t limit = maxRows == 0 ? defaultRows : maxRows;
    std::size_t count = 0;
    std::size_t size = 0;
    for (; count < limit && size < maxSize && m_rows.MoveNext(); ++count)
        size += m_rows.AppendTo(m_builders);
    if (count == 0)
        return false;
    auto owned = std::make_unique<SChildren<ArrowArray>>(m_builders.size());
    for (std::size_t i = 0; i < m_builders.size(); ++i)
        m_builders[i].MoveTo(owned->children[i]);
    ArrowArray batch{};
    batch.length = static_cast<std::int64_t>(count);
    batch.n_buffers = 1;
    batch.buffers = &owned->noBuffer;
    Adopt(batch, std::move(owned));
    array = batch;
    return true;
}

void CBatch::Describe(const std::vector<SColumn>& columns, ArrowSchema& schema) {
    auto owned = std::make_unique<SChildren<ArrowSchema>>(columns.size());
    for (std::size_t i = 0; i < columns.size(); ++i) {
        auto texts = std::make_unique<STexts>(STexts{columns[i].form.GetFormat(), columns[i].name});
        ArrowSchema& child = owned->children[i];
        child.format = texts->format.c_str();
        child.name = texts->name.c_str();
        child.flags = ARROW_FLAG_NULLABLE;
        child.release = &ReleaseTexts;
        child.private_data = texts.release();
    }
    ArrowSchema top{};
    top.format = "+s";
    top.name = "";
    Adopt(top, std::move(owned));
    schema = top;
}

} // namespace NSTQ::NSTQCore
