// mdbd as a second, independent control point meets it: node-ssdp finds it by SSDP on a veth
// pair (it passes loopback over), upnp-device-client reads its description, calls Browse, Search,
// an error case and the registrar over SOAP, and receives SystemUpdateID events (GENA) before and
// after a file is added. Runs inside a private network namespace (run_in_namespace.sh with
// MDB_NETNS_VETH=1); every wait is bounded.
'use strict';
const assert = require('node:assert');
const childProcess = require('node:child_process');
const fs = require('node:fs');
const http = require('node:http');
const os = require('node:os');
const path = require('node:path');
const test = require('node:test');

let Client, DeviceClient;
try {
  Client = require('node-ssdp').Client;
  DeviceClient = require('upnp-device-client');
} catch (error) {
  console.log('SKIP: the Node.js client packages are not installed (run "make deps")');
  process.exit(77);
}
// libupnp closes every connection after one answer: a kept-alive socket would be reused dead.
http.globalAgent = new http.Agent({keepAlive: false});

const ADDRESS = '10.77.0.1';

function startServer() {
  const dir = fs.mkdtempSync(path.join(os.tmpdir(), 'mdbd-node-'));
  const media = path.join(dir, 'media');
  fs.cpSync(process.env.MDB_TEST_SAMPLE_TREE, media, {recursive: true});
  const child = childProcess.spawn(process.env.MDBD, ['--address', ADDRESS, '--db', path.join(dir, 'catalogue.db'),
    '--name', 'MDB node test', '-v', media], {stdio: ['ignore', 'ignore', 'pipe']});
  let log = '';
  child.stderr.on('data', (chunk) => { log += chunk; });
  const ready = waitFor(() => /scanned \d+ media files/.test(log) &&
                        log.match(/serves .* on (http:\/\/\S+\/description\.xml)/), 30000, () => log);
  return ready.then((found) => ({child, dir, media, description: found[1], log: () => log}));
}

function waitFor(condition, ms, what) {
  const deadline = Date.now() + ms;
  return new Promise((resolve, reject) => {
    const poll = () => {
      const value = condition();
      if (value) return resolve(value);
      if (Date.now() > deadline) return reject(new Error('timed out waiting; ' + (what ? what() : '')));
      setTimeout(poll, 50);
    };
    poll();
  });
}

function call(client, service, action, args) {
  return new Promise((resolve, reject) => client.callAction(service, action, args,
    (error, result) => error ? reject(error) : resolve(result)));
}

function browse(client, id, flag = 'BrowseDirectChildren') {
  return call(client, 'ContentDirectory', 'Browse', {ObjectID: id, BrowseFlag: flag, Filter: '*',
    StartingIndex: 0, RequestedCount: 0, SortCriteria: ''});
}

test('a second control point discovers, browses, searches and hears events', async () => {
  const server = await startServer();
  const ssdp = new Client({interfaces: ['vcli']});
  try {
    const found = [];
    ssdp.on('response', (headers) => found.push(headers.LOCATION));
    const searching = setInterval(() => ssdp.search('urn:schemas-upnp-org:device:MediaServer:1'), 1000);
    await waitFor(() => found.length > 0, 15000).finally(() => clearInterval(searching));
    assert.strictEqual(found[0], server.description);

    const client = new DeviceClient(found[0]);
    const description = await new Promise((resolve, reject) =>
      client.getDeviceDescription((error, d) => error ? reject(error) : resolve(d)));
    assert.strictEqual(description.friendlyName, 'MDB node test');
    assert.deepStrictEqual(Object.keys(description.services).sort(), ['urn:microsoft.com:serviceId:X_MS_MediaReceiverRegistrar',
      'urn:upnp-org:serviceId:ConnectionManager', 'urn:upnp-org:serviceId:ContentDirectory']);

    const top = await browse(client, '0');
    assert.deepStrictEqual([top.NumberReturned, top.TotalMatches], ['3', '3']);
    assert.strictEqual((top.Result.match(/<container /g) || []).length, 3);
    const songs = await call(client, 'ContentDirectory', 'Search', {ContainerID: '0',
      SearchCriteria: 'dc:title contains "Song"', Filter: '*', StartingIndex: 0, RequestedCount: 0, SortCriteria: ''});
    assert.strictEqual(songs.TotalMatches, '3');
    await assert.rejects(browse(client, '0.1.264|999999', 'BrowseMetadata'), {errorCode: '701'});
    const registrar = await call(client, 'urn:microsoft.com:serviceId:X_MS_MediaReceiverRegistrar', 'IsAuthorized',
      {DeviceID: ''});
    assert.strictEqual(registrar.Result, '1');

    // The client reads event variables only without a namespace prefix ("property", where
    // libupnp writes "e:property"), and never answers a NOTIFY, so that libupnp would wait out its
    // time-out (30 s) before the next event: the test reads and answers the NOTIFY requests of
    // the client's subscription itself.
    await new Promise((resolve) => client.ensureEventingServer(resolve));
    const updateIds = [];
    client.server.on('request', (request, response) => {
      let body = '';
      request.on('data', (chunk) => { body += chunk; });
      request.on('end', () => {
        const found = body.match(/<SystemUpdateID>(\d+)<\/SystemUpdateID>/);
        if (found) updateIds.push(Number(found[1]));
        response.end();
      });
    });
    const listener = () => {};
    client.subscribe('ContentDirectory', listener);
    await waitFor(() => updateIds.length > 0, 10000);
    const before = Number((await browse(client, '0')).UpdateID);
    fs.copyFileSync(path.join(server.media, 'Music/Alpha/One.mp3'), path.join(server.media, 'Music/Alpha/Copy.mp3'));
    await waitFor(() => updateIds.some((id) => id > before), 20000, server.log);
    client.unsubscribe('ContentDirectory', listener);
  } finally {
    ssdp.stop();
    server.child.kill('SIGTERM');
    const ended = await waitFor(() => (server.child.exitCode !== null || server.child.signalCode !== null) &&
                                {code: server.child.exitCode, signal: server.child.signalCode}, 20000);
    fs.rmSync(server.dir, {recursive: true, force: true});
    assert.deepStrictEqual(ended, {code: 0, signal: null}, server.log());
  }
});
