"""Shared pieces of the security probes: a real qel-cimserver on a generated array, its
users, and CIM-XML requests over plain sockets (http.client), as an outside client sends
them. Nothing here measures; the probes do."""

import base64
import http.client
import os
import re
import resource
import shutil
import socket
import subprocess
import tempfile
import time

ENUMERATE_NAMES = (
    '<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0">'
    '<MESSAGE ID="1" PROTOCOLVERSION="1.0"><SIMPLEREQ><IMETHODCALL NAME="EnumerateInstanceNames">'
    '<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="qel"/></LOCALNAMESPACEPATH>'
    '<IPARAMVALUE NAME="ClassName"><CLASSNAME NAME="QEL_FCPort"/></IPARAMVALUE>'
    '</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>')

GET_INSTANCE = (
    '<?xml version="1.0" encoding="utf-8"?><CIM CIMVERSION="2.0" DTDVERSION="2.0">'
    '<MESSAGE ID="2" PROTOCOLVERSION="1.0"><SIMPLEREQ><IMETHODCALL NAME="GetInstance">'
    '<LOCALNAMESPACEPATH><NAMESPACE NAME="root"/><NAMESPACE NAME="qel"/></LOCALNAMESPACEPATH>'
    '<IPARAMVALUE NAME="InstanceName">{name}</IPARAMVALUE>'
    '<IPARAMVALUE NAME="LocalOnly"><VALUE>FALSE</VALUE></IPARAMVALUE>'
    '</IMETHODCALL></SIMPLEREQ></MESSAGE></CIM>')


def raise_descriptor_limit():
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))
    return hard


def basic(user, password):
    return "Basic " + base64.b64encode(f"{user}:{password}".encode()).decode()


def cim_headers(method, authorization):
    return {
        "Content-Type": 'application/xml; charset="utf-8"',
        "CIMOperation": "MethodCall",
        "CIMMethod": method,
        "CIMObject": "root%2Fqel",
        "Authorization": authorization,
    }


def post(conn, method, body, authorization):
    """One request on an open http.client connection: (status, headers dict, body)."""
    conn.request("POST", "/cimom", body=body, headers=cim_headers(method, authorization))
    r = conn.getresponse()
    data = r.read()
    return r.status, {k.lower(): v for k, v in r.getheaders()}, data


class Server:
    """qel-cimserver on a generated array of `ports` FC ports, on free loopback ports,
    with the array's users and passwords made up for the run. Stopped by stop()."""

    def __init__(self, build, ports=1000, extra=()):
        self.dir = tempfile.mkdtemp(prefix="qel-probe-")
        self.build = build
        env = dict(os.environ, QELSIM_STATE="none")
        array = os.path.join(self.dir, "array.json")
        subprocess.run([f"{build}/src/qelapi/qelsim", "generate", "--ports", str(ports),
                        "--out", array], check=True, env=env, stdout=subprocess.DEVNULL)
        self.passwords = {}
        passwd = os.path.join(self.dir, "passwd")
        for user in ("admin", "operator", "monitor"):
            out = subprocess.run([f"{build}/src/Server/auth/qel-passwd", "-f", passwd, "add",
                                  user, "--generate"], check=True, capture_output=True, text=True)
            self.passwords[user] = out.stdout.strip()
        self.log = os.path.join(self.dir, "server.log")
        with open(self.log, "w") as log:
            self.process = subprocess.Popen(
                [f"{build}/src/Server/main/qel-cimserver", "--port", "0", "--socket", "none",
                 "--array", array, "--password-file", passwd, "--log-level", "error", *extra],
                stdout=log, stderr=subprocess.STDOUT, env=env)
        self.port = None
        for _ in range(600):
            text = open(self.log).read()
            m = re.search(r"listening on http://[0-9.]+:(\d+)/cimom", text)
            if m and "Press Ctrl-C" in text:
                self.port = int(m.group(1))
                break
            if self.process.poll() is not None:
                raise RuntimeError("qel-cimserver exited:\n" + text)
            time.sleep(0.1)
        if self.port is None:
            raise RuntimeError("qel-cimserver did not start")

    def connection(self, timeout=30, source="127.0.0.1"):
        return http.client.HTTPConnection("127.0.0.1", self.port, timeout=timeout,
                                          source_address=(source, 0))

    def port_name(self, user="admin"):
        """The INSTANCENAME element of the first FC port."""
        conn = self.connection()
        status, _, body = post(conn, "EnumerateInstanceNames", ENUMERATE_NAMES,
                               basic(user, self.passwords[user]))
        conn.close()
        if status != 200:
            raise RuntimeError(f"EnumerateInstanceNames answered {status}")
        return re.search(rb"<INSTANCENAME.*?</INSTANCENAME>", body, re.S).group(0).decode()

    def cpu_seconds(self):
        fields = open(f"/proc/{self.process.pid}/stat").read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def stop(self):
        self.process.terminate()
        try:
            self.process.wait(timeout=30)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        shutil.rmtree(self.dir, ignore_errors=True)


def median(values):
    s = sorted(values)
    return s[len(s) // 2] if s else float("nan")
