#include "images/NSImageKelvoExtensions.h"
#include "support/Pictures.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

using namespace NSImageKelvoExtensions;
using tests::Letters;
using tests::picture;

/// What is drawn on a context, which is blue at first.
template <typename Draw>
Letters drawn(NSSize size, const Draw& draw, DrawingDestination destination = DrawingDestination::screen) {
    const auto context = NSGraphicsContext::contextOfSize(size, destination);
    context->fillRect({{}, size}, {0, 0, 1, 1});
    NSGraphicsContext::setCurrentContext(context);
    draw();
    NSGraphicsContext::setCurrentContext(nullptr);
    return tests::lettersOf(context->bitmap());
}

TEST(ImageDrawingTest, ScaledAndFlipped) {
    const auto opaque = imageWithBitmap(picture({"RG", "KW"}));
    const auto withAlpha = imageWithBitmap(picture({"r.", "KW"}));
    const auto scaled = [](const std::shared_ptr<NSImage>& image, bool flip, NSCompositingOperation operation,
                           float fraction) {
        return drawn({4, 3}, [&] {
            drawScaledInRect_flip_operation_fraction(*image, {{1, 1}, {2, 2}}, flip, operation, fraction);
        });
    };
    EXPECT_EQ(scaled(opaque, false, NSCompositeSourceOver, 1), (Letters{"BRGB", "BKWB", "BBBB"}));
    EXPECT_EQ(scaled(opaque, true, NSCompositeSourceOver, 1), (Letters{"BKWB", "BRGB", "BBBB"}));
    EXPECT_EQ(scaled(withAlpha, false, NSCompositeSourceOver, 1), (Letters{"BvBB", "BKWB", "BBBB"}));
    EXPECT_EQ(scaled(withAlpha, true, NSCompositeCopy, 1), (Letters{"BKWB", "Br.B", "BBBB"}));
    EXPECT_EQ(scaled(opaque, false, NSCompositeSourceOver, 0.5F).front(), "Bv?B");
    EXPECT_EQ(scaled(opaque, false, NSCompositeClear, 1), (Letters{"B..B", "B..B", "BBBB"}));
    EXPECT_EQ(scaled(opaque, false, NSCompositeDestinationOver, 1), (Letters{"BBBB", "BBBB", "BBBB"}));
    EXPECT_EQ(scaled(withAlpha, false, NSCompositeDestinationIn, 1)[0], "B?.B");
    EXPECT_EQ(scaled(imageWithBitmap(picture({"yW"})), false, NSCompositePlusDarker, 1)[0], "BKBB");
    EXPECT_EQ(scaled(imageWithBitmap(picture({"yK"})), false, NSCompositePlusLighter, 1)[0], "BWBB");
    EXPECT_FALSE(opaque->scalesWhenResized());
    EXPECT_EQ(drawn({2, 1},
                    [&] {
                        drawScaledInRect_flip_operation(*opaque, {{}, {0, 5}}, true, NSCompositeCopy);
                    }),
              (Letters{"BB"}));
    drawScaledInRect_flip_operation(*opaque, {{}, {1, 1}}, false, NSCompositeCopy);
}

TEST(ImageDrawingTest, ShadowsFallOnScreensAlone) {
    const auto image = imageWithBitmap(picture({"R"}));
    const auto withShadow = [&](bool shadow, DrawingDestination destination) {
        return drawn(
            {21, 21},
            [&] {
                drawScaledInRect_flip_operation_shadow(*image, {{8, 8}, {5, 5}}, true, NSCompositeSourceOver,
                                                       shadow);
            },
            destination);
    };
    const Letters plain = withShadow(false, DrawingDestination::screen);
    EXPECT_EQ(withShadow(true, DrawingDestination::printer), plain);
    const Letters shadowed = withShadow(true, DrawingDestination::screen);
    // The image itself is as it was; the darkest lies two points below it, and nothing as far above.
    EXPECT_EQ(shadowed[10].substr(8, 5), "RRRRR");
    EXPECT_EQ(shadowed[13][10], '?');
    EXPECT_EQ(shadowed[14][10], '?');
    EXPECT_EQ(shadowed[20], plain[20]);
    EXPECT_EQ(shadowed[4], plain[4]);
}

TEST(ImageDrawingTest, Overlays) {
    const auto image = imageWithBitmap(picture({"BB", "BB"}));
    const auto badge = imageWithBitmap(picture({"r"}));
    const auto lettersOf = [](const std::shared_ptr<NSImage>& one) {
        return tests::lettersOf(
            one->representations().front()->pixelsForSize({2, 2}, ImageGround::transparent));
    };
    EXPECT_EQ(lettersOf(imageWithOverlay_atPoint(*image, badge, {1, 1})), (Letters{"Bv", "BB"}));
    EXPECT_EQ(
        lettersOf(imageWithOverlay_atPoint_operation_fraction(*image, badge, {0, 0}, NSCompositeCopy, 1)),
        (Letters{"BB", "rB"}));
    const auto copy = imageWithOverlay_atPoint(*image, nullptr, {});
    EXPECT_NE(copy, image);
    EXPECT_EQ(copy->representations(), image->representations());
    EXPECT_EQ(lettersOf(image), (Letters{"BB", "BB"}));

    EXPECT_FALSE(cachedImageNamed(u"late"));
    EXPECT_FALSE(imageNamed_withOverlayNamed_atPoint(u"late", u"badge", {}));
    EXPECT_TRUE(image->setName(u"late"));
    EXPECT_TRUE(badge->setName(u"badge"));
    EXPECT_FALSE(badge->setName(u"late"));
    EXPECT_EQ(cachedImageNamed(u"late"), image);
    EXPECT_EQ(cachedImageNamed_size(u"late", {9, 8})->size(), (NSSize{9, 8}));
    EXPECT_EQ(image->size(), (NSSize{2, 2}));
    EXPECT_EQ(lettersOf(imageNamed_withOverlayNamed_atPoint(u"late", u"badge", {0, 1})),
              (Letters{"vB", "BB"}));
    EXPECT_TRUE(badge->setName(u"other"));
    EXPECT_FALSE(NSImage::imageNamed(u"badge"));
}

std::string smallPicture() {
    return std::string(
        representationUsingType_compression(*imageWithBitmap(picture({"R"})), NSPNGFileType, 1).characters());
}

TEST(ImageDrawingTest, ImagesOfBundles) {
    const tests::TemporaryFolder folder;
    folder.write(
        "A.bundle/Contents/Info.plist",
        "<plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>a</string></dict></plist>");
    folder.write("A.bundle/Contents/Resources/icon.png", smallPicture());
    folder.write("A.bundle/Contents/Resources/broken.png", "");
    folder.write("B.bundle/Resources/icon.png", smallPicture());
    const auto bundle = [&](const char* name) {
        return NSBundle::bundleWithPath(NSString::stringWithUTF8String(folder.path(name)));
    };
    const auto cached = cachedImageNamed_inBundle(u"icon", bundle("A.bundle"));
    ASSERT_TRUE(cached);
    EXPECT_EQ(cached->name(), u"icon");
    EXPECT_EQ(cachedImageNamed_inBundle(u"icon", bundle("A.bundle")), cached);
    for (int time = 0; time < 2; ++time)
        EXPECT_EQ(imageNamed_inBundle(u"icon.png", bundle("B.bundle"))->name(), u"icon.png") << time;
    const auto fresh = imageNamed_inBundle(u"icon.png", bundle("B.bundle"));
    EXPECT_TRUE(fresh && fresh != imageNamed_inBundle(u"icon.png", bundle("B.bundle")));
    // Without an identifier there is no place to keep it.
    EXPECT_FALSE(cachedImageNamed_inBundle(u"icon", bundle("B.bundle")));
    for (const char16_t* none : {u"broken", u"../icon", u"missing", u""})
        EXPECT_FALSE(cachedImageNamed_inBundle(none, bundle("A.bundle")));
}

TEST(ImageDrawingTest, IconsOfFileTypes) {
    const tests::TemporaryFolder folder;
    const tests::ScopedVariable home("HOME", folder.path().c_str());
    const tests::ScopedVariable data("XDG_DATA_DIRS", folder.path("share").c_str());
    const tests::ScopedVariable own("XDG_DATA_HOME", folder.path("own").c_str());
    const tests::ScopedVariable settings("XDG_CONFIG_HOME", folder.path("config").c_str());
    EXPECT_FALSE(cachedImageForFileType(u"jpg"));
    folder.write("config/gtk-3.0/settings.ini", "[Settings]\ngtk-icon-theme-name=Nice\n");
    folder.write("share/icons/Nice/index.theme",
                 "[Icon Theme]\nInherits=Base\nDirectories=32/m,16/m\n[32/m]\nSize=32\n[16/m]\nSize=16\n");
    folder.write("share/icons/Base/index.theme",
                 "[Icon Theme]\nInherits=Nice\nDirectories=b\n[b]\nSize=48\n");
    folder.write("share/icons/Nice/32/m/image-x-generic.png", smallPicture());
    folder.write("own/icons/Nice/16/m/image-x-generic.png", smallPicture());
    folder.write("share/icons/Base/b/application-pdf.png", smallPicture());
    // That there was none is kept.
    EXPECT_FALSE(cachedImageForFileType(u"jpg"));
    const auto icon = cachedImageForFileType(u"png");
    ASSERT_TRUE(icon);
    EXPECT_EQ(cachedImageForFileType(u"png"), icon);
    EXPECT_EQ(icon->size(), (NSSize{32, 32}));
    ASSERT_EQ(icon->representations().size(), 2U);
    EXPECT_EQ(icon->representations()[0]->size(), (NSSize{16, 16}));
    EXPECT_EQ(icon->representations()[1]->size(), (NSSize{32, 32}));
    EXPECT_EQ(cachedImageForFileType(u"'PDF '")->representations()[0]->size(), (NSSize{48, 48}));
    EXPECT_FALSE(cachedImageForFileType(nullptr) || cachedImageForFileType(u"no-such-type"));
}

} // namespace
} // namespace kelvo
