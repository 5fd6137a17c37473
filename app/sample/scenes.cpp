#include "sample/scenes.h"

#include "sample/canvas.h"
#include "sample/random.h"

namespace sample {

namespace {

struct Scene {
    Canvas &canvas;
    Random random;
    int phase;

    int anywhere() { return random.below(canvas.span()); }
    Outline outline(int wave, int detail) { return Outline(random.next(), wave, detail); }
};

QRgb warm(Scene &scene)
{
    return hsv(scene.random.between(5, 45), 190, 255);
}

void paintCloud(Scene &scene, QRgb color)
{
    const int x = scene.anywhere() + scene.phase / 8;
    const int y = scene.random.between(80, 330);
    const int size = scene.random.between(25, 60);
    for (int puff = -2; puff <= 2; ++puff) {
        const int rise = scene.random.below(size);
        const int radius = size * (4 - qAbs(puff)) / 3;
        scene.canvas.disc(x + puff * size, y - rise / 2, radius, color, 450);
    }
}

void paintClouds(Scene &scene, QRgb color)
{
    for (int left = scene.random.between(1, 4); left > 0; --left)
        paintCloud(scene, color);
}

void paintSunset(Scene &scene)
{
    Canvas &canvas = scene.canvas;
    const int horizon = scene.random.between(520, 700);
    const QRgb high = hsv(scene.random.between(210, 300), 170, 120);
    const QRgb low = warm(scene);
    canvas.gradient(0, horizon, high, low);
    const int sunX = canvas.span() * scene.random.between(200, 800) / 1000;
    const int sunY = horizon - scene.random.between(20, 260) + scene.phase / 6;
    canvas.glow(sunX, sunY, 480, qRgb(255, 230, 160), 800);
    canvas.disc(sunX, sunY, scene.random.between(45, 90), qRgb(255, 246, 214));
    canvas.gradient(horizon, 1000, blend(low, high, 450), blend(high, qRgb(10, 16, 40), 600));
    for (int i = 0; i < 70; ++i) {
        const int y = scene.random.between(horizon + 5, 990);
        const int reach = 30 + (y - horizon) / 2;
        const int x = sunX + scene.random.between(-reach, reach);
        canvas.rectangle(x - 25, y, scene.random.between(20, 90), 6, qRgb(255, 226, 170), 420);
    }
}

void paintBoat(Scene &scene)
{
    paintSunset(scene);
    const QRgb dark = qRgb(24, 18, 34);
    const int x = scene.anywhere() * 7 / 10 + 60 + scene.phase / 5;
    const int y = scene.random.between(720, 860);
    scene.canvas.triangle(x + 60, y - 210, x + 62, 90, y - 20, dark);
    scene.canvas.triangle(x + 55, y - 170, x - 10, 62, y - 20, dark);
    scene.canvas.rectangle(x - 20, y - 14, 180, 20, dark);
    scene.canvas.rectangle(x, y + 6, 140, 12, dark);
}

void paintMountains(Scene &scene)
{
    Canvas &canvas = scene.canvas;
    const int hue = scene.random.between(190, 250);
    const QRgb sky = hsv(hue, scene.random.between(90, 190), 235);
    const QRgb haze = blend(sky, qRgb(255, 255, 255), 650);
    canvas.gradient(0, 800, sky, haze);
    paintClouds(scene, qRgb(255, 255, 255));
    const int ground = scene.random.between(80, 150);
    for (int ridge = 0; ridge < 4; ++ridge) {
        const QRgb rock =
            blend(haze, hsv(hue + ridge * (ground - hue) / 4, 150, 90), 250 * ridge + 200);
        const Outline outline = scene.outline(620 - 90 * ridge, 5 - ridge / 2);
        const int y = 380 + 150 * ridge;
        const int swing = 250 - 40 * ridge;
        if (ridge < 2) // snow on the peaks: the rock below it rises less
            canvas.hills(outline, y, swing, qRgb(250, 252, 255), haze);
        canvas.hills(outline, y + 20, ridge < 2 ? swing * 7 / 10 : swing, rock,
                     blend(rock, qRgb(20, 40, 30), 300));
    }
}

void paintTree(Scene &scene, int x, int ground, int height, QRgb color)
{
    scene.canvas.rectangle(x - height / 24, ground - height / 5, height / 12, height / 4,
                           qRgb(70, 46, 30));
    for (int part = 0; part < 3; ++part) {
        const int base = ground - height / 6 - part * height / 4;
        const int width = height * (5 - part) / 9;
        scene.canvas.triangle(x, base - height * 2 / 5, x - width / 2, width, base,
                              blend(color, qRgb(255, 255, 255), 60 * part));
    }
}

void paintForest(Scene &scene)
{
    Canvas &canvas = scene.canvas;
    const bool morning = scene.random.oneIn(3);
    const QRgb sky = hsv(morning ? 28 : scene.random.between(190, 225), 80, 250);
    canvas.gradient(0, 700, sky, blend(sky, qRgb(255, 255, 255), 600));
    paintClouds(scene, qRgb(255, 255, 255));
    canvas.hills(scene.outline(500, 3), 470, 110, hsv(150, 70, 190), hsv(140, 90, 150));
    const int hue = scene.random.between(70, 165);
    for (int depth = 0; depth < 3; ++depth) {
        const QRgb green = hsv(hue, 130 + 30 * depth, 150 - 35 * depth);
        const Outline outline = scene.outline(600, 2);
        const int y = 590 + 150 * depth;
        canvas.hills(outline, y, 60, green, blend(green, qRgb(20, 30, 20), 500));
        for (int x = scene.random.below(90); x < canvas.span();
             x += scene.random.between(60, 190)) {
            const int height = scene.random.between(120, 190) + 50 * depth;
            paintTree(scene, x, y + 60 * outline.at(x) / 1000 + 12, height,
                      blend(green, qRgb(10, 40, 30), 350));
        }
    }
}

void paintNight(Scene &scene)
{
    Canvas &canvas = scene.canvas;
    const int hue = scene.random.between(205, 285);
    canvas.gradient(0, 1000, hsv(hue, 210, 30), hsv(hue + 20, 150, 120));
    for (int i = 0; i < 160; ++i)
        canvas.disc(scene.anywhere(), scene.random.below(800), scene.random.between(2, 6),
                    qRgb(255, 255, 240), scene.random.between(300, 1000));
    const int moonX = canvas.span() * scene.random.between(150, 850) / 1000 + scene.phase / 8;
    const int moonY = scene.random.between(130, 380);
    const int radius = scene.random.between(50, 95);
    canvas.glow(moonX, moonY, radius * 4, qRgb(220, 225, 255), 500);
    canvas.disc(moonX, moonY, radius, qRgb(244, 242, 226));
    for (int i = 0; i < 5; ++i)
        canvas.disc(moonX + scene.random.between(-radius / 2, radius / 2),
                    moonY + scene.random.between(-radius / 2, radius / 2), radius / 7,
                    qRgb(205, 203, 192), 700);
    canvas.hills(scene.outline(700, 4), 760, 140, hsv(hue, 150, 50), hsv(hue, 170, 30));
    canvas.hills(scene.outline(420, 4), 900, 90, hsv(hue, 120, 26), hsv(hue, 120, 12));
}

void paintHouse(Scene &scene, int x, int top, int width, QRgb wall)
{
    scene.canvas.rectangle(x, top, width, 1000 - top, wall);
    const QRgb lamp = qRgb(255, 224, 140);
    for (int y = top + 22; y < 960; y += 42)
        for (int window = x + 12; window < x + width - 16; window += 28)
            if (scene.random.oneIn(3))
                scene.canvas.rectangle(window, y, 14, 22, lamp, 850);
}

void paintCity(Scene &scene)
{
    Canvas &canvas = scene.canvas;
    const int hue = scene.random.between(220, 330);
    canvas.gradient(0, 1000, hsv(hue, 180, 70), hsv((hue + 90) % 360, 140, 240));
    canvas.glow(scene.anywhere(), 760 + scene.phase / 10, 620, qRgb(255, 190, 120), 700);
    for (int row = 0; row < 2; ++row) {
        const QRgb wall = hsv(hue, 90, 70 - 38 * row);
        for (int x = -scene.random.below(60); x < canvas.span();) {
            const int width = scene.random.between(80, 170);
            const int top = scene.random.between(260, 620) + 150 * row;
            paintHouse(scene, x, top, width, wall);
            x += width + scene.random.below(25) * row;
        }
    }
}

void paintBalloon(Scene &scene)
{
    Canvas &canvas = scene.canvas;
    const int radius = scene.random.between(45, 130);
    const int x = scene.anywhere() + scene.phase / 10;
    const int y = scene.random.between(120, 620) - scene.phase / 6;
    const int hue = scene.random.below(360);
    const QRgb skin = hsv(hue, 210, 235);
    canvas.triangle(x, y + radius * 3 / 2, x - radius * 5 / 6, radius * 5 / 3, y + radius / 2,
                    skin);
    for (int line = -1; line <= 1; line += 2)
        canvas.triangle(x + line * radius / 6, y + radius * 2, x + line * radius / 2, radius / 12,
                        y + radius / 3, qRgb(90, 60, 40));
    canvas.disc(x, y, radius, skin);
    canvas.disc(x, y, radius * 2 / 3, hsv((hue + 40) % 360, 190, 250));
    canvas.disc(x, y, radius / 3, skin);
    canvas.disc(x - radius / 3, y - radius / 3, radius / 4, qRgb(255, 255, 255), 350);
    canvas.rectangle(x - radius / 5, y + radius * 7 / 4, radius * 2 / 5, radius / 3,
                     qRgb(112, 72, 42));
}

void paintBalloons(Scene &scene)
{
    const QRgb sky = hsv(scene.random.between(185, 225), 150, 240);
    scene.canvas.gradient(0, 1000, sky, qRgb(250, 244, 228));
    paintClouds(scene, qRgb(255, 255, 255));
    for (int left = scene.random.between(3, 7); left > 0; --left)
        paintBalloon(scene);
    const int hue = scene.random.between(60, 130);
    scene.canvas.hills(scene.outline(600, 2), 880, 60, hsv(hue, 120, 170), hsv(hue, 150, 100));
}

void paintDunes(Scene &scene)
{
    Canvas &canvas = scene.canvas;
    const QRgb sky = hsv(scene.random.between(180, 230), 120, 245);
    canvas.gradient(0, 600, sky, qRgb(255, 236, 200));
    canvas.disc(scene.anywhere(), scene.random.between(120, 280) + scene.phase / 10,
                scene.random.between(40, 70), qRgb(255, 250, 225));
    const int hue = scene.random.between(16, 42);
    for (int dune = 0; dune < 4; ++dune) {
        const QRgb sand = hsv(hue, 110 + 30 * dune, 245 - 25 * dune);
        canvas.hills(scene.outline(900 - 120 * dune, 1), 480 + 130 * dune, 130, sand,
                     blend(sand, qRgb(96, 40, 20), 650));
    }
}

void paintMeadow(Scene &scene)
{
    Canvas &canvas = scene.canvas;
    const int horizon = scene.random.between(300, 460);
    canvas.gradient(0, horizon + 60, hsv(205, 140, 240), hsv(195, 40, 255));
    paintClouds(scene, qRgb(255, 255, 255));
    canvas.hills(scene.outline(700, 2), horizon, 60, hsv(100, 120, 200), hsv(115, 190, 80));
    const int hue = scene.random.below(360);
    for (int y = horizon + 70; y < 1040; y += 6 + (y - horizon) / 40) {
        const int size = 3 + (y - horizon) / 26;
        for (int left = canvas.span() / (size * 5) + 1; left > 0; --left) {
            const int x = scene.anywhere() + scene.phase / 60;
            const QRgb petal = hsv((hue + scene.random.below(90)) % 360, 170, 250);
            canvas.disc(x, y, size, petal);
            canvas.disc(x, y, size / 3 + 1, qRgb(255, 220, 60));
        }
    }
}

void paintShapes(Scene &scene)
{
    Canvas &canvas = scene.canvas;
    const int hue = scene.random.below(360);
    canvas.gradient(0, 1000, hsv(hue, 90, 250), hsv((hue + 60) % 360, 160, 170));
    for (int i = scene.random.between(8, 16); i > 0; --i) {
        const QRgb color = hsv((hue + scene.random.between(60, 300)) % 360, 180, 240);
        const int x = scene.anywhere() + scene.phase / 8;
        const int y = scene.random.below(1000);
        const int size = scene.random.between(60, 230);
        switch (scene.random.below(3)) {
        case 0:
            canvas.disc(x, y, size, color, 780);
            break;
        case 1:
            canvas.rectangle(x, y, size * 2, size, color, 780);
            break;
        default:
            canvas.triangle(x, y - size, x - size, size * 2, y + size, color);
        }
    }
}

/// Rows of a message list, as on a screen.
void paintScreen(Scene &scene)
{
    Canvas &canvas = scene.canvas;
    const int hue = scene.random.below(360);
    const int span = canvas.span();
    canvas.gradient(0, 1000, qRgb(244, 245, 248), qRgb(232, 234, 240));
    canvas.rectangle(0, 0, span, 105, hsv(hue, 190, 210));
    canvas.rectangle(span / 4, 48, span / 2, 26, qRgb(255, 255, 255), 900);
    for (int y = 135; y < 900; y += 125) {
        canvas.rectangle(20, y, span - 40, 105, qRgb(255, 255, 255));
        canvas.disc(80, y + 52, 38, hsv((hue + scene.random.below(180)) % 360, 150, 230));
        const int line = scene.random.between(span / 4, span - 190);
        canvas.rectangle(140, y + 28, line * 3 / 4, 16, qRgb(60, 64, 76));
        canvas.rectangle(140, y + 62, line, 12, qRgb(170, 174, 186));
    }
    canvas.rectangle(0, 930, span, 70, qRgb(250, 250, 252));
    for (int tab = 0; tab < 4; ++tab)
        canvas.disc(span * (2 * tab + 1) / 8, 965, 20,
                    tab == 0 ? hsv(hue, 190, 210) : qRgb(190, 194, 204));
}

using Painter = void (*)(Scene &scene);
const Painter painters[] = {paintSunset,   paintMountains, paintForest, paintNight,  paintCity,
                            paintBalloons, paintDunes,     paintMeadow, paintShapes, paintBoat};
constexpr int painterCount = sizeof painters / sizeof painters[0];

Painter painterFor(const AssetPlan &plan, Random &random)
{
    if (plan.subject == Subject::Screen)
        return paintScreen;
    // Roughly in turn, so that neighbours in a list differ.
    const int first = plan.index - plan.burstFrame;
    return painters[(first + first / painterCount * 3 + random.below(2)) % painterCount];
}

} // namespace

QImage paintScene(const AssetPlan &plan, int phase)
{
    Canvas canvas(plan.width, plan.height);
    Random random(plan.sceneSeed);
    const Painter painter = painterFor(plan, random);
    Scene scene{canvas, random, phase};
    painter(scene);
    return canvas.picture();
}

} // namespace sample
