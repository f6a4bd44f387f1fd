#include "ui/now_playing_card.h"

#include "ui/view_parts.h"

namespace purlock {

namespace {

View texts(const NowPlayingInfo& info) {
    View texts =
        column(2, {line(info.title.value_or("(unknown title)"), {13, FontWeight::semibold}, white())});
    if (info.artist) {
        texts.children.push_back(
            line(info.album ? *info.artist + " · " + *info.album : *info.artist, {11}, white(0.6)));
    }
    if (info.appName) texts.children.push_back(line(*info.appName, {10}, white(0.4)));
    return texts;
}

View playingSymbol(bool isPlaying) {
    View view =
        isPlaying ? symbol("speaker.wave.2.fill", {12}, accentGreen) : symbol("pause.fill", {12}, white(0.4));
    view.label = isPlaying ? "Playing" : "Paused";
    return view;
}

}  // namespace

View NowPlayingCard::body() const {
    return onCard(row(defaultSpacing, {texts(info), flexibleSpace(), playingSymbol(info.isPlaying)}),
                  {10, 10}, 0.05);
}

}  // namespace purlock
