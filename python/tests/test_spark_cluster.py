"""The data source on a standalone cluster of processes of this machine, of which one worker is killed half way."""

from __future__ import annotations

import os
import re
import shutil
import signal
import subprocess
import sys
import threading
import time
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import Any

import pytest
from conftest import RELEASES, house_text

pyspark = pytest.importorskip("pyspark", reason="PySpark is not installed")
if shutil.which("java") is None:
    pytest.skip("there is no Java", allow_module_level=True)

FILES = 120
SECONDS = 60
HOST = "127.0.0.1"

# A session of its own: the driver of another test may be of this process.
DRIVER = """
import sys, threading, time
from pyspark.sql import SparkSession
import vnifc.spark

master, folder = sys.argv[1:]
builder = SparkSession.builder.master(master).config("spark.ui.enabled", "false").config("spark.driver.host", "127.0.0.1")
builder = builder.config("spark.executor.memory", "512m").config("spark.cores.max", "2").config("spark.executor.cores", "1")
spark = builder.getOrCreate()
vnifc.spark.register(spark)
context = spark.sparkContext
tracker = context.statusTracker()
done = threading.Event()

def executors():
    return context._jsc.sc().getExecutorMemoryStatus().size() - 1  # the driver is among them

while executors() < 2:
    time.sleep(0.1)

def watch():
    told = False
    while not done.is_set():
        for stage in tracker.getActiveStageIds():
            info = tracker.getStageInfo(stage)
            if info and not told and info.numTasks > 100 and info.numCompletedTasks > 10:
                print("half way", info.numCompletedTasks, info.numTasks, flush=True)
                told = True
        time.sleep(0.05)

threading.Thread(target=watch, daemon=True).start()
frame = spark.read.format("vnifc").options(partitionBytes="1").load(folder)
rows = frame.groupBy("release").count().collect()
done.set()
print("executors", executors(), flush=True)
print("result", sorted((row["release"], row["count"]) for row in rows), flush=True)
spark.stop()
"""


def start(log: Path, *arguments: str) -> subprocess.Popen[bytes]:
    program = Path(pyspark.__file__).parent / "bin" / "spark-class"
    environment = {**os.environ, "SPARK_LOCAL_IP": HOST, "SPARK_NO_DAEMONIZE": "1"}
    with log.open("wb") as out:
        return subprocess.Popen(
            ["bash", str(program), *arguments], stdout=out, stderr=out, env=environment, start_new_session=True
        )


def waited_for(found: Callable[[], Any], what: str) -> Any:
    end = time.monotonic() + SECONDS
    while not (result := found()):
        assert time.monotonic() < end, f"no {what} within {SECONDS} s"
        time.sleep(0.1)
    return result


@pytest.fixture
def cluster(tmp_path: Path) -> Iterator[tuple[str, list[subprocess.Popen[bytes]]]]:
    log = tmp_path / "master.log"
    package = "org.apache.spark.deploy"
    started = [start(log, f"{package}.master.Master", "--host", HOST, "--port", "0", "--webui-port", "0")]
    try:
        url = waited_for(lambda: re.search(r"spark://127\.0\.0\.1:\d+", log.read_text()), "master").group()
        for i in range(2):
            options = ["--host", HOST, "--cores", "1", "--memory", "1g", "--webui-port", "0"]
            folder = str(tmp_path / f"worker{i}")
            started.append(start(tmp_path / f"{i}.log", f"{package}.worker.Worker", *options, "--work-dir", folder, url))
        waited_for(lambda: log.read_text().count("Registering worker") == 2, "workers")
        yield url, started[1:]
    finally:
        for process in started:
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()


def test_a_killed_worker_changes_nothing(
    cluster: tuple[str, list[subprocess.Popen[bytes]]], tmp_path: Path
) -> None:
    master, workers = cluster
    folder = tmp_path / "models"
    folder.mkdir()
    for i in range(FILES):
        (folder / f"{i:03}.ifc").write_text(house_text(RELEASES[i % len(RELEASES)]), encoding="utf-8")
    environment = {**os.environ, "PYSPARK_PYTHON": sys.executable, "SPARK_LOCAL_IP": HOST}
    command = [sys.executable, "-c", DRIVER, master, str(folder)]
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, env=environment) as driver:
        assert driver.stdout and driver.stderr
        # A pipe that nobody reads would stop the driver.
        errors: list[str] = []
        reader = threading.Thread(target=lambda stream: errors.extend(stream), args=(driver.stderr,))
        reader.start()
        try:
            first = driver.stdout.readline()
            # The worker's executor is of its process group.
            os.killpg(workers[0].pid, signal.SIGKILL)
            rest = driver.stdout.read().splitlines()
        finally:
            driver.terminate()
            reader.join()
    assert first.startswith("half way"), "".join(errors)
    completed, tasks = map(int, first.split()[2:])
    assert completed < tasks == FILES
    assert rest == ["executors 1", f"result {[(release, FILES // len(RELEASES)) for release in RELEASES]}"], "".join(errors)
    assert any("ExecutorLostFailure" in line or "Lost executor" in line for line in errors)
