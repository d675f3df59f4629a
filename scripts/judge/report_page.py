"""Opens a report of the companion tool in Chromium, types names into it and compares with the tool's own answers.

    report_page.py QANH_EXE FOLDER

FOLDER is made anew; it keeps the report, its screenshot and what was found. Needs a Wine prefix in WINEPREFIX.
"""

import html
import json
import os
import re
import shutil
import subprocess
import sys
import tempfile

CATALOGUE = """<?xml version="1.0" encoding="UTF-8"?>
<Applications>
  <MetroApps>
    <Package PackageFamilyName="Vel.Calendar_1" Version="1.2.0.7">
      <MetroApp DisplayName="calendar" ShortName="cal" />
      <MetroApp DisplayName="mail" ShortName="mail and calendar" RubyShortName="めーる" />
    </Package>
    <Package PackageFamilyName="Vel.Gmail_1" Version="2.0.0.0">
      <MetroApp DisplayName="gmail" ShortName="web mail" />
      <MetroApp DisplayName="" ShortName="mail without a name" />
    </Package>
    <Package PackageFamilyName="Vel.Gone_1" Version="2.0.0.0" IsInstalled="0">
      <MetroApp DisplayName="mail that is gone" />
    </Package>
    <Package PackageFamilyName="Vel.Empty_1" Version="1.0.0.0" />
  </MetroApps>
  <DesktopApps>
    <DesktopApp DisplayName="Mail" LnkFileName="C:\\Start\\Mail.lnk" />
    <DesktopApp DisplayName="Add Mail" RubyDisplayName="add mail" LnkFileName="C:\\Start\\Add Mail.lnk" />
    <DesktopApp DisplayName="Mail Box" LnkFileName="C:\\Start\\Mail Box.lnk" />
    <DesktopApp DisplayName="mail box" LnkFileName="C:\\Start\\mail box 2.lnk" />
    <DesktopApp DisplayName="MAIL BOX" RubyDisplayName="mail" LnkFileName="C:\\Start\\mail box 3.lnk" />
    <DesktopApp DisplayName="メール" LnkFileName="C:\\Start\\メール.lnk" RubyDisplayName="めーる" NeedReserve="1" />
    <DesktopApp DisplayName="メール アプリ" LnkFileName="C:\\Start\\メール アプリ.lnk" />
    <DesktopApp DisplayName="ルーメ" LnkFileName="C:\\Start\\ルーメ.lnk" IsDualMode="1" />
    <DesktopApp DisplayName="Notepad" LnkFileName="C:\\Start\\Notepad.lnk" LocalizeName="Editor" />
    <DesktopApp DisplayName="text editor" LnkFileName="C:\\Start\\e.lnk" />
    <DesktopApp DisplayName="word 2013" LnkFileName="C:\\Start\\word.lnk" />
    <DesktopApp DisplayName="a/b c_d" LnkFileName="C:\\Start\\ab.lnk" />
    <DesktopApp DisplayName="b a" LnkFileName="C:\\Start\\ba.lnk" />
    <DesktopApp DisplayName="Ärger" LnkFileName="C:\\Start\\aerger.lnk" />
    <DesktopApp DisplayName="ärger mit mail" LnkFileName="C:\\Start\\aerger2.lnk" />
    <DesktopApp DisplayName="ｍａｉｌ １２" LnkFileName="C:\\Start\\wide.lnk" />
    <DesktopApp DisplayName="日本語 mail" LnkFileName="C:\\Start\\j.lnk" />
    <DesktopApp DisplayName="back\\slash" LnkFileName="C:\\Start\\back.lnk" />
    <DesktopApp DisplayName="🙂 mail" LnkFileName="C:\\Start\\smile.lnk" />
    <DesktopApp DisplayName="&lt;script&gt;document.title='broken'&lt;/script&gt; mail" LnkFileName="C:\\Start\\s.lnk" />
    <DesktopApp DisplayName="&lt;/script&gt;&lt;img src=x onerror=&quot;document.title='broken'&quot;&gt; &amp;amp; mail" LnkFileName="C:\\Start\\i.lnk" />
  </DesktopApps>
</Applications>
"""
LOG = """[2014/03/01 09:05:06.000]CQanhPackageManager::RefreshThread Refresh app name list!
[2014/03/01 09:05:06.100]CQanhPackageManager::RefreshMetroApps IN
[2014/03/01 09:05:06.300]CQanhPackageManager::RefreshMetroApps OUT(0x00000000)
[2014/03/01 09:05:07.042]QanhLaunchBySearch(<script>document.title='broken'</script>, 0, 1) IN
[2014/03/01 09:05:07.046]QanhLaunchBySearch szKeyword = "Mail" 
[2014/03/01 09:05:07.046]CQanhMonitorMode::OpenAppSearchUI IN
[2014/03/01 09:05:07.752]CQanhMonitorMode::OpenAppSearchUI OUT(0x00000000)
[2014/03/01 09:05:07.752]CQanhClipboard::SetClipboardData("Mail") IN
[2014/03/01 09:05:07.853]CQanhClipboard::SetClipboardData OUT(0x80004005)
[2014/03/01 09:05:08.653]CQanhKeyEmulate::Sendinput_Key(0x0010, 0x002A, 0x00000002) IN
[2014/03/01 09:05:08.653]CQanhKeyEmulate::Sendinput_Key OUT
[2014/03/01 09:05:08.653]QanhLaunchBySearch OUT(0x00000000)
[2014/03/01 09:05:10.042]QanhLaunchBySearch(Editor, 2, 0) IN
[2014/03/01 09:05:10.946]QanhLaunchBySearch OUT(0x00000000)
"""
# What stands in the catalogue is asked for too.
NAMES = ["a", "A", "e", "mai", "MAIL", "Mail Box", "box mail", "cal", "めーる", "め", "ー", "1", "１", "2013", "word",
         "Word 2013", "a/b", "b", "c_d", "_", "/", "!!!", "-", "ä", "Ä", "ARGER", "日", "本 mail", "\\", "slash", "🙂",
         "<", "script", "</script>", "amp", "x\"y", "NOT", "it", "mit  mail", "İ", "ſ", "K", "nothing at all"]

# Appended to a copy of the page: types each name, one letter after the other, and leaves what the page shows.
DRIVER = """<pre id="result"></pre><script>
const field = document.getElementById("name");
const found = {};
for (const name of NAMES) {
  field.value = "";
  for (const letter of name) {
    field.value += letter;
    field.dispatchEvent(new Event("input"));
  }
  found[name] = document.getElementById("query").textContent;
}
const texts = [...document.querySelectorAll("#applications tbody td:nth-child(2)")].map((cell) => cell.textContent);
document.getElementById("result").textContent = JSON.stringify({found, texts, title: document.title,
  bars: document.querySelectorAll("#timeline rect").length, images: document.images.length,
  scripts: document.scripts.length, problems: document.getElementById("problems").innerText,
  rows: document.querySelectorAll("#failures tr").length, log: document.getElementById("log").textContent});
</script></body>"""


def browser():
    for name in ("chromium", "chromium-browser", "google-chrome"):
        if shutil.which(name):
            return name
    raise SystemExit("there is no Chromium")


def run_browser(page, *options):
    with tempfile.TemporaryDirectory() as profile:
        return subprocess.run(
            [browser(), "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
             "--disable-background-networking", "--disable-component-update", "--disable-sync",
             f"--user-data-dir={profile}", *options, "file://" + os.path.abspath(page)],
            check=True, capture_output=True, text=True, timeout=180).stdout


def qanh(executable, *arguments):
    result = subprocess.run(["wine", executable, *arguments], capture_output=True, timeout=120, stdin=subprocess.DEVNULL)
    if result.returncode not in (0, 1):
        raise SystemExit(f"qanh {arguments}: {result.stderr.decode()}")
    return result.stdout.decode()


def take_picture(report, name, picture):
    """Of the page of a report, with the name typed into its search field."""
    with open(report, encoding="utf-8") as file:
        page = file.read()
    value = json.dumps(name).replace("<", "\\u003c")
    with tempfile.TemporaryDirectory() as folder:
        typed = os.path.join(folder, "typed.html")
        with open(typed, "w", encoding="utf-8") as file:
            file.write(page.replace("showQuery();\n</script>",
                                    f'document.getElementById("name").value = {value}; showQuery();\n</script>'))
        run_browser(typed, "--hide-scrollbars", "--window-size=1200,3000", "--screenshot=" + os.path.abspath(picture))


def main(executable, folder):
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    path = lambda name: os.path.join(folder, name)
    with open(path("AppNameList.xml"), "w", encoding="utf-8") as file:
        file.write(CATALOGUE)
    with open(path("log.txt"), "w", encoding="ascii", newline="\r\n") as file:
        file.write(LOG)
    qanh(executable, "report", "--catalogue", path("AppNameList.xml"), "--log", path("log.txt"), "-o",
         path("report.html"))
    with open(path("report.html"), encoding="utf-8") as file:
        page = file.read()
    known = [html.unescape(name) for name in re.findall(r'(?:DisplayName|ShortName|LocalizeName)="([^"]+)"', CATALOGUE)]
    names = list(dict.fromkeys(NAMES + known))
    with open(path("driven.html"), "w", encoding="utf-8") as file:
        script = json.dumps(names).replace("<", "\\u003c")
        head, tail = page.rsplit("</body>", 1)
        file.write(head + DRIVER.replace("NAMES", script) + tail)
    dump = run_browser(path("driven.html"), "--dump-dom")
    result = json.loads(html.unescape(re.search(r'<pre id="result">(.*?)</pre>', dump, re.S).group(1)))

    problems = []
    for name in names:
        if '"' in name:
            continue  # Wine's command line is not what is tested
        wanted = json.loads(qanh(executable, "explain", "--json", "--catalogue", path("AppNameList.xml"), "--",
                                 name))["Query"]
        if result["found"][name] != wanted:
            problems.append(f"{name}: the page has {result['found'][name]}, the tool {wanted}")
    expect = {"title": "QanHelper report", "images": 0, "rows": 1}
    problems += [f"{key} is {result[key]}, not {value}" for key, value in expect.items() if result[key] != value]
    counted = "2 launches, 1 refresh pass, 1 failure"
    if counted not in result["log"]:
        problems.append(f"the log is told of as {result['log']}, without {counted}")
    if result["bars"] < 10:
        problems.append("the time line has too few bars")
    if not any(text.startswith("<script>") for text in result["texts"]):
        problems.append("a name with <script> is not text any more")
    if re.search(r'(?:src|href)\s*=|https?://(?!www\.w3\.org/2000/svg)', page.split('type="application/json"')[0] +
                 page.split('type="application/json"')[1].split("</script>", 1)[1]):
        problems.append("the page refers to something outside of it")

    take_picture(path("report.html"), "Mail", path("report.png"))
    if os.path.getsize(path("report.png")) < 20000:
        problems.append("the screenshot is next to empty")
    print("\n".join(problems) or f"{len(names)} names, all as the tool has them")
    return 1 if problems else 0


if __name__ == "__main__":
    if sys.argv[1] == "--picture":
        sys.exit(take_picture(*sys.argv[2:]))
    sys.exit(main(*sys.argv[1:]))
