#!/usr/bin/python3
"""Opens reports in a browser, as a reader does, and holds them to what they promise.

    browser_test.py KALMIA DATA WORK     the command, the folder of the example tables, a folder to write into

Takes chromium, its driver and python3-selenium (install-packages.sh report).
"""
import base64
import json
import math
import os
import re
import shutil
import subprocess
import sys
import time
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

KALMIA, DATA, WORK = "", "", ""
READY_WITHIN = 15.0  # seconds; a third of it and less is usual, but the machine may be busy

MARKUP_ROW = "<img src=x onerror=document.title='broken'>"
MARKUP_COLUMN = "</script><script>document.title='broken'</script>"


def table(name):
    return os.path.join(DATA, name)


def write_report(name, *arguments):
    """The path of a report, and the figures that the command gives as data."""
    path = os.path.join(WORK, name + ".html")
    run = subprocess.run([KALMIA, *arguments, "--json", "--figures", "--report", path], capture_output=True, text=True)
    if run.returncode != 0:
        raise AssertionError(f"{' '.join(arguments)}: {run.stderr}")
    return path, json.loads(run.stdout)["figures"]


def nasty_table():
    """Rows and columns called by markup, emoji, right-to-left letters and 10,000 characters."""
    columns = [MARKUP_COLUMN, "\U0001f33f", "שלום", "c" * 10000, "plain"]
    rows = [MARKUP_ROW, "\U0001f600 row", "مرحبا", "r" * 10000, "--><!--", "&lt;b&gt;"] + [f"r{i}" for i in range(24)]
    path = os.path.join(WORK, "nasty.csv")
    with open(path, "w", encoding="utf-8") as file:
        file.write(",".join(["id", *columns]) + "\n")
        for i, row in enumerate(rows):
            cells = [math.sin(3 * i + k) + 0.2 * k * math.cos(i) for k in range(len(columns))]
            file.write(",".join([row, *(f"{cell:.6f}" for cell in cells)]) + "\n")
    return path


def long_table(rows, columns):
    path = os.path.join(WORK, "long.csv")
    with open(path, "w", encoding="utf-8") as file:
        file.write(",".join(f"x{k}" for k in range(columns)) + "\n")
        for i in range(rows):
            file.write(",".join(f"{math.sin(i * 0.37 + k) + math.cos(i * (k + 1) * 0.011):.5f}"
                                for k in range(columns)) + "\n")
    return path


def inside(x, y, corners):
    crossings = 0
    for (x1, y1), (x2, y2) in zip(corners, corners[1:] + corners[:1]):
        if (y1 > y) != (y2 > y) and x < (x2 - x1) * (y - y1) / (y2 - y1) + x1:
            crossings += 1
    return crossings % 2 == 1


class Reports(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        options = Options()
        for argument in ["--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars",
                         "--disable-dev-shm-usage", f"--user-data-dir={os.path.join(WORK, 'profile')}"]:
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        options.binary_location = "/usr/bin/chromium"
        cls.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    @classmethod
    def tearDownClass(cls):
        cls.browser.quit()

    # ---- what tests are made of

    def js(self, script, *arguments):
        return self.browser.execute_script(script, *arguments)

    def cdp(self, command, **arguments):
        return self.browser.execute_cdp_cmd(command, arguments)

    def open(self, path, width=1300, height=900, scheme="light"):
        """Opens a page and waits until it is ready; the seconds that took."""
        self.cdp("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.cdp("Emulation.setEmulatedMedia", media="", features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.browser.get_log("browser"), self.browser.get_log("performance")
        begin = time.monotonic()
        self.browser.get("file://" + path)
        while self.js("return document.documentElement.dataset.ready") != "true":
            self.assertLess(time.monotonic() - begin, READY_WITHIN, "the page does not get ready")
            time.sleep(0.02)
        return time.monotonic() - begin

    def assert_quiet(self, path):
        """No message in the console, and no request but the one for the page."""
        self.assertEqual(self.browser.get_log("browser"), [])
        requests = []
        for entry in self.browser.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                requests.append(message["params"]["request"]["url"])
        self.assertEqual([url for url in requests if not url.startswith(("data:", "blob:"))], ["file://" + path])

    def plot(self, name):
        return self.browser.find_element(By.CSS_SELECTOR, f"[data-plot='{name}']")

    def chosen_in_table(self):
        lines = self.browser.find_elements(By.CSS_SELECTOR, "tr[data-row][aria-selected='true']")
        return sorted(int(line.get_attribute("data-row")) for line in lines)

    def pixels(self, name, points):
        """Where points of a plot lie in the window, which is scrolled to it."""
        return self.js("""
            const canvas = document.querySelector(`[data-plot='${arguments[0]}'] .canvas`);
            canvas.scrollIntoView({block: 'center'});
            kalmiaReport.plots[arguments[0]].items();  // it may not have been in view before
            const box = canvas.getBoundingClientRect(), chart = echarts.getInstanceByDom(canvas);
            return arguments[1].map((point) => {
              const [x, y] = chart.convertToPixel({xAxisIndex: 0, yAxisIndex: 0}, point);
              return [box.left + x, box.top + y];
            });""", name, points)

    def move(self, actions, place):
        actions.w3c_actions.pointer_action.move_to_location(round(place[0]), round(place[1]))

    def assert_draws(self, figures):
        """Each figure has a plot, whose marks have the numbers of the command."""
        self.assertEqual(self.js("return Object.keys(kalmiaReport.plots)"), [f["name"] for f in figures["figures"]])
        for figure in figures["figures"]:
            drawn = {series["id"]: series["data"]
                     for series in self.js("return kalmiaReport.plots[arguments[0]].items()", figure["name"])}
            self.assertGreater(len(drawn), 0, figure["name"])
            panels = [figure["marks"]] + [panel["marks"] for panel in figure["below"]]
            for place, marks in enumerate(panels):
                for k, mark in enumerate(marks):
                    if mark["type"] not in ("points", "line", "bars", "text"):
                        continue
                    finite = lambda pair: None not in pair
                    expected = list(filter(finite, zip(mark["x"], mark["y"])))
                    found = [tuple(pair) for pair in drawn[f"mark-{place}-{k}"] if finite(pair)]
                    self.assertEqual(found, expected, f"{figure['name']}, mark {k} of panel {place}")

    # ---- the tests

    def test_every_kind_of_model_is_drawn_without_a_message_or_a_request(self):
        for name, arguments in MODELS.items():
            with self.subTest(name):
                path, figures = write_report(name, *arguments)
                self.open(path)
                self.assert_draws(figures)
                self.assert_quiet(path)
                self.assertLess(os.path.getsize(path), 6e6)

    def test_a_lasso_in_one_plot_chooses_the_rows_everywhere(self):
        path, figures = write_report("lasso", *MODELS["pls"])
        self.open(path)
        points = next(mark for mark in figures["figures"][0]["marks"] if mark["type"] == "points")
        items = list(zip(points["x"], points["y"]))
        middle = self.pixels("scores", [[sum(points["x"]) / len(items), sum(points["y"]) / len(items)]])[0]
        places = self.pixels("scores", items)
        # A triangle of odd shape: a rectangle around it would take other rows.
        corners = [[middle[0] - 90, middle[1] - 70], [middle[0] + 100, middle[1] - 20], [middle[0] - 40, middle[1] + 80]]
        expected = [i for i, (x, y) in enumerate(places) if inside(x, y, corners)]
        self.assertGreater(len(expected), 2)
        self.assertLess(len(expected), len(items) - 2)

        self.plot("scores").find_element(By.CSS_SELECTOR, "[data-action=lasso]").click()
        places = self.pixels("scores", items)
        actions = ActionChains(self.browser, duration=0)
        self.move(actions, corners[0])
        actions.w3c_actions.pointer_action.pointer_down()
        for begin, end in zip(corners, corners[1:] + corners[:1]):
            for step in range(1, 9):
                self.move(actions, [b + (e - b) * step / 8 for b, e in zip(begin, end)])
        actions.w3c_actions.pointer_action.pointer_up()
        actions.perform()
        self.assertEqual(self.js("return kalmiaReport.selection()"), expected)
        self.assertEqual(self.chosen_in_table(), expected)
        for name in ["scores", "distance", "fit"]:
            self.assertEqual(self.plot(name).get_attribute("data-selected"), str(len(expected)))

        self.plot("scores").find_element(By.CSS_SELECTOR, "[data-action=reset]").click()
        self.assertEqual(self.js("return kalmiaReport.selection()"), [])
        self.assert_quiet(path)

    def test_a_row_under_the_pointer_is_named_and_ringed_in_other_plots(self):
        path, figures = write_report("hover", *MODELS["pls"])
        self.open(path)
        points = next(mark for mark in figures["figures"][0]["marks"] if mark["type"] == "points")
        far = max(range(len(points["x"])), key=lambda i: abs(points["x"][i]) + abs(points["y"][i]))
        name = figures["names"]["rows"][far]
        actions = ActionChains(self.browser, duration=0)
        place = self.pixels("scores", [[points["x"][far], points["y"][far]]])[0]
        self.move(actions, [place[0] - 30, place[1] - 30])
        self.move(actions, place)
        actions.perform()
        self.assertEqual(self.plot("distance").get_attribute("data-hovered"), name)
        self.assertEqual(self.js("return document.querySelector('[data-plot=scores] .tip b').textContent"), name)

    def test_the_table_chooses_and_keys_do(self):
        path, _ = write_report("keys", *MODELS["pls"])
        self.open(path)
        self.browser.find_element(By.CSS_SELECTOR, "tr[data-row='4']").click()
        self.assertEqual(self.js("return kalmiaReport.selection()"), [4])
        self.assertEqual(self.plot("scores").get_attribute("data-selected"), "1")
        # Chosen rows stand first; the key goes on from there.
        self.js("document.querySelector(\"tr[data-row='4']\").focus()")
        ActionChains(self.browser).send_keys(Keys.ARROW_DOWN, Keys.ENTER).perform()
        self.assertEqual(self.js("return kalmiaReport.selection()"), [0, 4])
        ActionChains(self.browser).send_keys(Keys.ESCAPE).perform()
        self.assertEqual(self.js("return kalmiaReport.selection()"), [])
        self.js("document.querySelector('[data-plot=scores] .canvas').focus()")
        actions = ActionChains(self.browser, duration=0)
        self.move(actions, [2, 2])  # off every row, which the page takes note of before keys come
        actions.perform()
        time.sleep(0.2)
        self.js("kalmiaReport.hover(-1)")
        ActionChains(self.browser).send_keys(Keys.ARROW_RIGHT, Keys.ARROW_RIGHT, " ").perform()
        self.assertEqual(self.js("return kalmiaReport.selection()"), [1])

    def test_other_components_are_those_of_the_command_for_these_axes(self):
        path, _ = write_report("axes", *MODELS["pls"])
        _, wanted = write_report("axes23", *MODELS["pls"], "--axes", "2,3")
        self.open(path)
        for name in ["scores", "loadings"]:
            control = lambda axis: self.plot(name).find_element(By.CSS_SELECTOR, f"select[data-control={axis}-component]")
            for axis, value in [("x", 1), ("y", 2)]:
                self.js("arguments[0].value = arguments[1]; arguments[0].dispatchEvent(new Event('change'))",
                        control(axis), value)
            figure = next(f for f in wanted["figures"] if f["name"] == name)
            drawn = {s["id"]: s["data"] for s in self.js("return kalmiaReport.plots[arguments[0]].items()", name)}
            for k, mark in enumerate(figure["marks"]):
                if mark["type"] == "rule":
                    continue
                for (x, y), expected in zip(drawn[f"mark-0-{k}"], zip(mark["x"], mark["y"])):
                    # The ellipse is stretched from the one of the first two components: some roundings more.
                    tolerance = 1e-9 * max(map(abs, mark["x"] + mark["y"]))
                    self.assertAlmostEqual(x, expected[0], delta=tolerance)
                    self.assertAlmostEqual(y, expected[1], delta=tolerance)
        self.assert_quiet(path)

    def test_names_are_data_and_never_markup(self):
        path, figures = write_report("nasty", "pca", nasty_table(), "--id", "id", "--components", "2")
        self.open(path)
        self.assert_draws(figures)
        rows = self.js("return [...kalmiaReport.rows]")
        self.assertEqual(rows[0], MARKUP_ROW)
        self.assertIn(MARKUP_COLUMN, self.js(
            "return JSON.parse(document.getElementById('kalmia-figures').textContent).names.columns"))
        self.js("kalmiaReport.select([0, 1, 2, 3]); kalmiaReport.hover(0)")
        for plot in self.js("return Object.keys(kalmiaReport.plots)"):
            self.assertNotIn("<img", self.js("return kalmiaReport.toSvg(arguments[0])", plot))
        points = next(mark for mark in figures["figures"][0]["marks"] if mark["type"] == "points")
        place = self.pixels("scores", [[points["x"][0], points["y"][0]]])[0]
        actions = ActionChains(self.browser, duration=0)
        self.move(actions, [place[0] - 30, place[1] - 30])
        self.move(actions, place)
        actions.perform()
        time.sleep(0.1)
        self.assertEqual(self.js("return document.images.length"), 0)
        self.assertEqual(self.js("return document.scripts.length"), 4)
        self.assertTrue(self.browser.title.startswith("PCA of"))
        self.assert_quiet(path)

    def test_a_command_without_what_pages_are_drawn_with_says_so_before_any_work(self):
        bare = os.path.join(WORK, "bare", "bin", "kalmia")
        os.makedirs(os.path.dirname(bare), exist_ok=True)
        shutil.copy(KALMIA, bare)
        model, page = os.path.join(WORK, "bare", "model"), os.path.join(WORK, "bare", "page.html")
        run = subprocess.run([bare, *MODELS["pls"], "--save", model, "--report", page], capture_output=True, text=True)
        self.assertEqual(run.returncode, 3)
        self.assertRegex(run.stderr, "^kalmia: --report needs .*echarts.min.js, which is not there")
        self.assertEqual([os.path.exists(model), os.path.exists(page)], [False, False])
        plain = subprocess.run([bare, *MODELS["pls"], "--save", model], capture_output=True, text=True)
        self.assertEqual(plain.returncode, 0)
        os.remove(model)

    def test_it_is_readable_in_the_dark_and_on_a_narrow_screen(self):
        path, _ = write_report("narrow", *MODELS["da"])
        self.open(path, width=400, height=800, scheme="dark")
        self.assertLessEqual(self.js("return document.documentElement.scrollWidth"), 400)
        light = lambda colour: sum(int(part) for part in re.findall(r"\d+", colour)[:3])
        body = "return getComputedStyle(document.body)."
        self.assertLess(light(self.js(body + "backgroundColor")), 150)
        self.assertGreater(light(self.js(body + "color")), 500)
        self.js("document.querySelector('[data-action=theme]').click()")
        self.assertGreater(light(self.js(body + "backgroundColor")), 700)
        self.assert_quiet(path)

    def test_paper_holds_whole_plots(self):
        path, figures = write_report("paper", *MODELS["pls"])
        self.open(path)
        pdf = os.path.join(WORK, "paper.pdf")
        with open(pdf, "wb") as file:
            file.write(base64.b64decode(self.cdp("Page.printToPDF", printBackground=False)["data"]))
        text = subprocess.run(["pdftotext", "-layout", pdf, "-"], capture_output=True, text=True, check=True).stdout
        pages = [re.sub(r"\s+", " ", page) for page in text.split("\f")]
        title = self.js("return document.querySelector('h1').textContent")
        for figure in figures["figures"]:
            heading = figure["title"].replace(": " + title, "")
            alike = [page for page in pages if heading in page and figure["alt"][:40] in page]
            self.assertEqual(len(alike), 1, f"{figure['name']} and its words are on one page")
            # The label of the lowest axis stands below the plot: nothing of it was cut off.
            lowest = figure["below"][-1] if figure["below"] else figure
            self.assertIn(lowest["x"]["label"], alike[0])
        subprocess.run(["pdftoppm", "-r", "50", "-gray", pdf, os.path.join(WORK, "paper")], check=True)
        # Margins are white: no plot runs over the edge of its page.
        for name in filter(re.compile(r"paper-\d+\.pgm").fullmatch, os.listdir(WORK)):
            with open(os.path.join(WORK, name), "rb") as file:
                _, width, height, _, pixels = re.match(rb"(P5)\s(\d+)\s(\d+)\s(\d+)\s(.*)", file.read(), re.S).groups()
            width, height = int(width), int(height)
            margin = [pixels[y * width + x] for y in range(height) for x in (*range(12), *range(width - 12, width))]
            self.assertEqual(min(margin), 255, name)

    def test_pictures_and_the_rows_can_be_saved(self):
        path, _ = write_report("save", *MODELS["pls"])
        self.open(path)
        folder = os.path.join(WORK, "downloads")
        os.makedirs(folder, exist_ok=True)
        for name in os.listdir(folder):
            os.remove(os.path.join(folder, name))
        self.cdp("Browser.setDownloadBehavior", behavior="allow", downloadPath=folder)
        self.js("kalmiaReport.select([2, 5])")
        for action in ["svg", "png"]:
            self.plot("scores").find_element(By.CSS_SELECTOR, f"[data-action={action}]").click()
        self.browser.find_element(By.CSS_SELECTOR, "[data-action=csv]").click()
        wanted = {"scores.svg", "scores.png", "rows.csv"}
        deadline = time.monotonic() + 10
        while not wanted <= set(os.listdir(folder)) and time.monotonic() < deadline:
            time.sleep(0.05)
        def read(name):
            with open(os.path.join(folder, name), "rb") as file:
                return file.read()
        self.assertTrue(read("scores.svg").startswith(b"<svg"))
        self.assertEqual(read("scores.png")[:8], b"\x89PNG\r\n\x1a\n")
        lines = read("rows.csv").decode().splitlines()
        self.assertEqual([line.split(",")[0] for line in lines], ["row", "3", "6"])

    def test_many_rows_are_ready_soon_and_chosen_at_once(self):
        path, _ = write_report("long", "pca", long_table(20000, 20), "--components", "3", "--validation", "none")
        self.assertLess(os.path.getsize(path), 6e6)
        ready = self.open(path)
        rows = self.js("return kalmiaReport.rows.length")
        begin = time.monotonic()
        self.js("kalmiaReport.select(Array.from({length: 2000}, (_, i) => 3 * i))")
        chosen = time.monotonic() - begin
        print(f"{rows} rows: ready within {ready:.1f} s, 2000 chosen within {chosen:.1f} s", file=sys.stderr)
        self.assertLess(chosen, 5.0)  # a second is usual
        self.assertEqual(len(self.browser.find_elements(By.CSS_SELECTOR, "tr[data-row]")), 200)
        self.assertEqual(len(self.chosen_in_table()), 200)
        self.assert_quiet(path)


def models():
    gasoline = [table("gasoline.csv"), "--y", "octane", "--id", "sample", "--scale", "centre"]
    wine = [table("wine.csv"), "--id", "sample"]
    return {
        "pca": ["pca", *wine, "--exclude", "cultivar"],
        "pls": ["pls", *gasoline],
        "da": ["pls", *wine, "--classes", "cultivar", "--permutations", "20"],
        "opls": ["opls", *gasoline, "--orthogonal", "2"],
        "o2pls": ["o2pls", table("oliveoil.csv"), table("oliveoil.csv"), "--id", "sample", "--x", "Acidity..DK",
                  "--y", "yellow..syrup"],
        "one": ["pls", *gasoline, "--components", "1"],
        "mean": ["pls", *gasoline, "--components", "0"],
    }


if __name__ == "__main__":
    KALMIA, DATA, WORK = (os.path.abspath(argument) for argument in sys.argv[1:4])
    os.makedirs(WORK, exist_ok=True)
    MODELS = models()
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
