"""One run of a command with its CPU time, and a titled list, for the benchmark runners."""
import os
import signal
import subprocess
import tempfile
import time


def timed_run(command, timeout, merge_stderr=True):
    """(exit status, or None when killed at the wall-clock timeout; CPU seconds of the command
    and the children it waited for; its standard output, with standard error if merged)."""
    with tempfile.TemporaryFile() as out:
        proc = subprocess.Popen(command, stdout=out, stderr=subprocess.STDOUT if merge_stderr else subprocess.DEVNULL,
                                stdin=subprocess.DEVNULL, start_new_session=True)
        start, killed, pause = time.monotonic(), False, 0.001
        while True:     # polled, so that the kill can never reach a process group already reaped
            pid, status, usage = os.wait4(proc.pid, os.WNOHANG)
            if pid:
                break
            if not killed and time.monotonic() - start > timeout:
                # the command's own children are in its group: gone with it
                os.killpg(proc.pid, signal.SIGKILL)
                killed = True
            time.sleep(pause)
            pause = min(pause * 2, 0.02)
        out.seek(0)
        text = out.read().decode(errors='replace')
    seconds = usage.ru_utime + usage.ru_stime
    return (None if killed else os.waitstatus_to_exitcode(status)), seconds, text


def print_list(title, items, prefix='  '):
    """'title: N' (or 'none'), then each item on a line of its own after `prefix`."""
    print(f'{title}: {len(items) if items else "none"}')
    for item in items:
        print(f'{prefix}{item}')
