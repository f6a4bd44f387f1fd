#include "platform/linux/pipewire/rules/pod_view.h"

#include <spa/pod/pod.h>
#include <spa/utils/type.h>

#include <algorithm>

namespace purlock::host_linux {

namespace {

constexpr std::size_t mostValues = 4096;

std::size_t padded(std::size_t size) {
    return (size + 7) & ~std::size_t{7};
}

}  // namespace

std::optional<PodView> PodView::take(Bytes& bytes) {
    spa_pod head{};
    if (bytes.size() < sizeof head) return std::nullopt;
    std::memcpy(&head, bytes.data(), sizeof head);
    const Bytes rest = bytes.subspan(sizeof head);
    if (rest.size() < head.size) return std::nullopt;
    bytes = rest.subspan(std::min(rest.size(), padded(head.size)));
    return PodView(head.type, rest.first(head.size));
}

std::optional<PodView> PodView::fromLibrary(const void* pod) {
    if (pod == nullptr) return std::nullopt;
    spa_pod head{};
    std::memcpy(&head, pod, sizeof head);
    Bytes bytes(static_cast<const std::byte*>(pod), sizeof head + head.size);
    return take(bytes);
}

std::optional<std::uint32_t> PodView::id() const {
    return type_ == SPA_TYPE_Id ? read<std::uint32_t>() : std::nullopt;
}

std::optional<std::int32_t> PodView::integer() const {
    return type_ == SPA_TYPE_Int ? read<std::int32_t>() : std::nullopt;
}

std::optional<std::int64_t> PodView::longInteger() const {
    return type_ == SPA_TYPE_Long ? read<std::int64_t>() : std::nullopt;
}

std::optional<bool> PodView::boolean() const {
    const auto value = type_ == SPA_TYPE_Bool ? read<std::int32_t>() : std::nullopt;
    return value ? std::optional(*value != 0) : std::nullopt;
}

std::optional<float> PodView::real() const {
    return type_ == SPA_TYPE_Float ? read<float>() : std::nullopt;
}

std::optional<std::string_view> PodView::text() const {
    if (type_ != SPA_TYPE_String) return std::nullopt;
    const auto* const characters = reinterpret_cast<const char*>(body_.data());
    return std::string_view(characters, ::strnlen(characters, body_.size()));
}

std::vector<PodView> PodView::elements() const {
    return type_ == SPA_TYPE_Array ? values(0) : std::vector<PodView>();
}

std::vector<PodView> PodView::values(std::size_t offset) const {
    std::vector<PodView> found;
    const auto child = read<spa_pod>(offset);
    if (!child || child->size == 0) return found;
    Bytes rest = body_.subspan(offset + sizeof(spa_pod));
    while (rest.size() >= child->size && found.size() < mostValues) {
        found.push_back(PodView(child->type, rest.first(child->size)));
        rest = rest.subspan(child->size);
    }
    return found;
}

std::optional<PodView::Fraction> PodView::fraction() const {
    return type_ == SPA_TYPE_Fraction ? read<Fraction>() : std::nullopt;
}

std::vector<PodView> PodView::members() const {
    std::vector<PodView> found;
    if (type_ != SPA_TYPE_Struct) return found;
    Bytes rest = body_;
    while (found.size() < mostValues) {
        const auto member = take(rest);
        if (!member) break;
        found.push_back(*member);
    }
    return found;
}

std::vector<PodView::Property> PodView::properties(std::uint32_t objectType) const {
    std::vector<Property> found;
    if (type_ != SPA_TYPE_Object || read<std::uint32_t>() != objectType) return found;
    if (body_.size() < sizeof(spa_pod_object_body)) return found;
    Bytes rest = body_.subspan(sizeof(spa_pod_object_body));
    while (found.size() < mostValues && rest.size() >= 2 * sizeof(std::uint32_t)) {
        std::uint32_t key = 0;
        std::memcpy(&key, rest.data(), sizeof key);
        rest = rest.subspan(2 * sizeof(std::uint32_t));  // the key and its flags
        const auto value = take(rest);
        if (!value) break;
        found.push_back({key, *value});
    }
    return found;
}

PodView::Choice PodView::choice() const {
    if (type_ != SPA_TYPE_Choice) return {SPA_CHOICE_None, {*this}};
    const auto body = read<spa_pod_choice_body>();
    if (!body) return {};
    return {body->type, values(offsetof(spa_pod_choice_body, child))};
}

}  // namespace purlock::host_linux
